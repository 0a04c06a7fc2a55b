#include "console/fmwrapper/guard.h"

namespace vell::console {

CallCounter call_counter;
std::atomic<std::int64_t> live_objects[static_cast<std::size_t>(StandInObject::Count_)];

} // namespace vell::console
