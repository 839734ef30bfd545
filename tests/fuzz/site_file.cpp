// Site files: any text is read and checked, its mistakes can be shown on a terminal, and a site
// without errors has rows for the tables, each text as the lines take it.
#include "host/site/site_file.h"

#include <string>

#include "host/site/site_check.h"
#include "host/site/site_tables.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/printed.h"

namespace {

using fuzz::Expect;

std::string Described(const host::Findings& findings) {
    std::string text;
    for (const host::Finding& finding : findings.All()) {
        Expect(finding.line >= 1, "a mistake has a line");
        text += host::Describe("site.toml", finding);
    }
    return text + host::Summary(findings) + "\n";
}

std::string Check(std::string_view text) {
    host::ReadSite read = host::ParseSite(text);
    if (read.is_toml) {
        host::CheckSite(read.site, read.findings);
    } else {
        Expect(read.findings.HasErrors(), "no TOML is an error");
    }
    if (!read.findings.HasErrors()) {
        for (const host::TableRow& row : host::RowsOf(read.site)) {
            Expect(row.table != nullptr, "a row is for a table");
        }
    }
    return Described(read.findings);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text = fuzz::View(data, size);
    const std::string described = Check(text);
    fuzz::ExpectFitForTerminal(described);
    Expect(described == Check(text), "the same text has the same mistakes");
    return 0;
}
