#include "console/host/wide_text.h"
#include "console/selftest/checks.h"
#include "console/selftest/child_process.h"
#include "console/selftest/shown_paths.h"

#include <algorithm>
#include <fstream>
#include <string_view>

namespace vell::selftest {
namespace {

namespace fs = std::filesystem;
using console::narrow;

// Whether commands take the path without quotes, and print it in every code page alike.
bool is_plain(const fs::path& path) {
    return std::ranges::all_of(path.wstring(), [](wchar_t c) {
        return c < 0x80 && std::wstring_view(L" &()[]{}^=;!'+,`~%").find(c) == std::wstring::npos;
    });
}

// A fresh copy of the examples' files, none of them read-only.
void copy_files(const Places& places, const fs::path& folder) {
    fs::copy(places.examples / L"files", folder, fs::copy_options::recursive);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
}

struct Script {
    std::vector<std::string> setup;
    std::vector<std::string> statements; // those of the setup first
};

Script script_of(const Places& places, const ExamplePage& page, const fs::path& folder) {
    Script script;
    script.setup = statements_in(read_file(places.examples / L"setup.vell"));
    script.setup.insert(script.setup.begin(),
                        "$work = " + literal(narrow(folder.wstring()) + '\\'));
    script.statements = script.setup;
    for (const Example& example : page.examples)
        script.statements.insert(script.statements.end(), example.statements.begin(),
                                 example.statements.end());
    return script;
}

Outcomes all_failed(const ExamplePage& page, const std::string& message) {
    Outcomes outcomes;
    for (const Example& example : page.examples)
        outcomes.push_back({page.name + ": " + example.title, Verdict::Failed, message});
    return outcomes;
}

Outcome outcome_of(const ExamplePage& page, const Example& example, const std::string& actual) {
    Outcome outcome{page.name + ": " + example.title};
    if (matches(example.result, actual))
        return outcome;
    outcome.verdict = Verdict::Failed;
    for (const std::string& statement : example.statements)
        outcome.message += statement + '\n';
    outcome.message += "expected\n" + example.result + "\nactual\n" + actual;
    return outcome;
}

} // namespace

std::vector<ExamplePage> chosen_examples(const Places& places, const NameFilter& filter) {
    std::vector<ExamplePage> pages = read_examples(read_file(places.examples / L"examples.txt"));
    std::erase_if(pages,
                  [&](const ExamplePage& page) { return !filter.takes("Examples." + page.name); });
    return pages;
}

Outcomes run_page(const Places& places, const ExamplePage& page, const Limits& limits) {
    const fs::path above = places.work / L"Examples";
    const fs::path folder = above / console::widen(page.name);
    const fs::path file = places.work / console::widen(page.name + ".vell");
    fs::create_directories(above);
    copy_files(places, folder);
    const Script script = script_of(places, page, folder);
    std::ofstream(file, std::ios::binary) << marked_statements(script.statements);
    const ChildEnd end =
        run_child({places.programs / L"vellhost.exe", L"--raw --file \"" + file.wstring() + L"\"",
                   above, places.work / L"vellhost.txt", limits.suite});
    const auto printed = split_at_marks(end.output, script.statements.size());
    if (!printed)
        return all_failed(page, end_text(end, limits.suite) + "\n" + end.errors);
    for (std::size_t i = 0; i < script.setup.size(); ++i)
        if ((*printed)[i].starts_with("$$"))
            return all_failed(page, script.setup[i] + "\n" + (*printed)[i]);
    ShownPaths shown;
    shown.add(to_utf16(folder.wstring()), "C:\\Work");
    Outcomes outcomes;
    const std::string* next = printed->data() + script.setup.size();
    for (const Example& example : page.examples) {
        const std::string actual = shown.in(result_of(example, next));
        next += example.statements.size();
        outcomes.push_back(
            example.needs_plain_path && !is_plain(folder)
                ? Outcome{page.name + ": " + example.title, Verdict::Skipped,
                          "the temporary folder's path is not plain enough for this command"}
                : outcome_of(page, example, actual));
    }
    if (!outcomes.empty())
        outcomes.front().seconds = end.seconds; // of the page as a whole
    return outcomes;
}

} // namespace vell::selftest
