// Every function of the plug-in with paths that the policy does not allow.
#include "src/plugin/plugin.h"
#include "src/policy/guard.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/no_drops.h"
#include "tests/portable/watched_system.h"

#include <map>

namespace vell::plugin {
namespace {

using Texts = std::vector<std::u16string>;

// Takes whatever is registered.
class AnyHost : public Host {
  public:
    void meet(std::int16_t) override {}
    bool has_steps() const override { return true; }
    ErrorCode add(const FunctionRow&) override { return ErrorCode::Ok; }
    ErrorCode add(const StepRow&) override { return ErrorCode::Ok; }
    ErrorCode remove_function(std::int16_t) override { return ErrorCode::Ok; }
    ErrorCode remove_step(std::int16_t) override { return ErrorCode::Ok; }
};

class AnyCall : public HostCall {
  public:
    explicit AnyCall(Texts parameters) : call(std::move(parameters)) {}
    params::Call& open(bool) override { return call; }
    void set_result(std::string_view text) override { call.set_literal(text); }

    testing::FakeCall call;
};

// The names of the parameters behind the switches.
std::vector<std::string> parameter_names(const FunctionRow& row) {
    std::string text(row.prototype.substr(std::min(row.prototype.find('('), row.prototype.size())));
    if (const std::size_t comment = text.find("/*"); comment != text.npos)
        text.erase(comment, text.find("*/") + 2 - comment);
    std::erase_if(text,
                  [](char c) { return std::string_view("(){} ").find(c) != std::string::npos; });
    std::vector<std::string> names;
    for (std::size_t at = text.find(';'); at != text.npos; at = text.find(';', at + 1))
        names.push_back(text.substr(at + 1, text.find(';', at + 1) - at - 1));
    return names;
}

// Every name that speaks of an item on a disk, so that a new function's are among them.
bool is_path_name(std::string_view parameter) {
    std::string name(parameter);
    std::ranges::transform(name, name.begin(), fold_ascii<char>);
    for (const std::string_view word : {"path", "file", "folder", "disk", "source", "spec"})
        if (name.find(word) != name.npos)
            return true;
    return false;
}

// Parameters that are no path, or of which nothing but the text is looked at. Nothing outside may
// be reached with them all the same.
const std::map<std::string_view, std::vector<std::string_view>> texts_only = {
    {"VlFile_DragAndDrop", {"fileName"}}, // of a document of the host
    {"VlFile_FileSpecToFullPath", {"FileSpec"}},
    {"VlFile_FullPathToFileSpec", {"filePath"}},
    {"VlFile_GetExtension", {"filepath"}},
    {"VlFile_GetFileName", {"filepath"}},
    {"VlFile_GetPathTo", {"desiredFilename", "fileSize"}},
    {"VlFile_ReferenceToClip", {"filePath", "pathToFMFile"}}, // not available
    {"VlFile_SetDefaultFileSpec", {"filePath"}},              // whoever uses it is refused
    {"VlFile_SetDefaultType", {"fileType"}},
};

bool is_text_only(std::string_view function, std::string_view parameter) {
    const auto found = texts_only.find(function);
    return found != texts_only.end() && std::ranges::count(found->second, parameter) > 0;
}

class WalkOfTheRegistry : public ::testing::Test {
  protected:
    WalkOfTheRegistry() {
        system.add(u"C:\\in\\a.txt", "text");
        system.add_folder(u"C:\\in\\folder");
        system.add(u"C:\\out\\b.txt", "secret");
        system.add_folder(u"C:\\out\\folder");
        system.add_folder(u"C:\\in\\link").link = u"C:\\out";
        system.add(u"C:\\in\\file link").link = u"C:\\out\\b.txt";
        before_ = system.all();
    }

    std::string call(const FunctionRow& row, Texts parameters) {
        AnyCall given(std::move(parameters));
        plugin.serve(row.registered_id(), given);
        return utf8_from_utf16(given.call.result().value_or(u"<none>"));
    }
    // The others are such as the function can work with.
    Texts with(const std::vector<std::string>& names, std::size_t index,
               const std::u16string& value) const {
        Texts parameters{u"-files -MD5 -Created"};
        for (std::size_t i = 0; i < names.size(); ++i) {
            const bool is_target = names[i].find("est") != std::string::npos;
            const bool is_folder = names[i].find("older") != std::string::npos;
            parameters.push_back(i == index                ? value
                                 : !is_path_name(names[i]) ? u"1"
                                 : is_target               ? u"C:\\in\\new.txt"
                                 : is_folder               ? u"C:\\in\\folder"
                                                           : u"C:\\in\\a.txt");
        }
        return parameters;
    }
    std::map<std::u16string, std::string> outside() const {
        auto items = system.all();
        std::erase_if(items, [](const auto& item) { return !item.first.starts_with(u"C:\\out"); });
        return items;
    }

    testing::WatchedSystem system;
    policy::Guard guard{policy(), system, [] {
                            return std::u16string();
                        }};
    AnyHost host;
    testing::NoDrops none;
    dragdrop::DragAndDrop drops{none, none, guard.system().files()};
    Plugin plugin{host, guard.system(), drops, &guard};
    std::map<std::u16string, std::string> before_;

  private:
    static policy::Policy policy() {
        policy::Policy policy;
        policy.read_roots = policy.write_roots = policy::Roots{u"C:\\in"};
        policy.audit.is_on = false;
        return policy;
    }
};

TEST_F(WalkOfTheRegistry, RefusesEveryPathOutside) {
    const auto secret = outside();
    int refused = 0;
    for (const FunctionRow& row : function_rows()) {
        const std::vector<std::string> names = parameter_names(row);
        for (std::size_t i = 0; i < names.size(); ++i) {
            const bool is_path = is_path_name(names[i]) && !is_text_only(row.name(), names[i]);
            for (const std::u16string path :
                 {u"C:\\out\\b.txt", u"C:\\out\\folder", u"C:\\out\\new", u"C:\\in\\..\\out\\b.txt",
                  u"C:/out/b.txt", u"C:\\in\\link\\b.txt", u"C:\\in\\link\\folder",
                  u"C:\\in\\link\\new", u"C:\\inside\\b.txt", u"D:\\b.txt",
                  u"\\\\server\\share\\b.txt", u"\\\\?\\C:\\out\\b.txt", u"\\\\.\\COM1"}) {
                const std::string answer = call(row, with(names, i, path));
                const std::string what =
                    std::string(row.name()) + " " + names[i] + " " + utf8_from_utf16(path);
                EXPECT_EQ(system.trespasses, Texts()) << what << " answers " << answer;
                system.trespasses.clear();
                if (!is_path)
                    continue;
                EXPECT_EQ(answer, "$$-4225") << what;
                ++refused;
            }
        }
    }
    EXPECT_EQ(outside(), secret);
    EXPECT_GT(refused, 500);
}

} // namespace
} // namespace vell::plugin
