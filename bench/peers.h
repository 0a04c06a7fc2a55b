// Work that is timed once or a few times, against native tools that bench/run has timed before on
// the same files, or against bare Windows calls in this process.
#pragma once

#include "bench/harness.h"

#include <functional>
#include <string>
#include <vector>

namespace vell::bench {

// Whether bench/run has made the files to work on; without them such rows are left out.
bool has_sample_files();
// The path of one of these files, or of one to be made beside them.
std::wstring sample_path(const wchar_t* name);
// The paths of the files in a folder of samples, by a pattern such as L"*.pdf".
std::vector<std::wstring> sample_files(const wchar_t* folder, const wchar_t* pattern);
// The same for all files of any folder.
std::vector<std::wstring> files_of(const std::wstring& folder, const wchar_t* pattern = L"*");

// Nanoseconds that a native tool took, by the name of its variable; 0 when bench/run did not time
// it.
double native_ns(const wchar_t* name);

// A new empty folder; bench/run removes all of them at the end.
std::wstring fresh_folder();

// Nanoseconds of one run of the work, and of the better one of two where it is short; `reset` runs
// untimed before each.
double time_of(const std::function<void()>& work, const std::function<void()>& reset = {});

// The same of ours, and the mean of the peer's runs before and after it: what is in the caches of
// the system, or full in them, favours neither.
Timing between_peers(const std::function<void()>& ours, const std::function<void()>& peer,
                     const std::function<void()>& reset = {});

} // namespace vell::bench
