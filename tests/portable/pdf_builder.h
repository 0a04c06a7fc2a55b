// PDF files made for tests.
#pragma once

#include <cstdio>
#include <map>
#include <string>

namespace vell::test {

// A file as it grows by objects and updates.
struct Pdf {
    std::string bytes = "%PDF-1.4\n";
    std::map<int, std::size_t> offsets{}; // of the update in work
    std::size_t table = 0;

    Pdf& object(int number, const std::string& body) {
        offsets[number] = bytes.size();
        bytes += std::to_string(number) + " 0 obj\n" + body + "\nendobj\n";
        return *this;
    }
    // One subsection for each object.
    Pdf& add_table() {
        table = bytes.size();
        bytes += "xref\n0 1\n0000000000 65535 f \n";
        for (const auto& [number, offset] : offsets) {
            char entry[40];
            std::snprintf(entry, sizeof entry, "%d 1\n%010zu 00000 n \n", number, offset);
            bytes += entry;
        }
        offsets.clear();
        return *this;
    }
    Pdf& finish(const std::string& trailer) {
        add_table();
        bytes +=
            "trailer\n<< " + trailer + " >>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
        return *this;
    }
};

} // namespace vell::test
