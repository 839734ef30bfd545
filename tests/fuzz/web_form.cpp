// What browsers send: any cookies and any forms are those of somebody who has signed in, or not.
// Nobody has, so nothing changes, whatever is asked.
#include <sstream>
#include <string>

#include "host/store/schema.h"
#include "host/web/pages.h"
#include "tests/fuzz/folder.h"
#include "tests/fuzz/input.h"

namespace {

using fuzz::Expect;

class Site {
 public:
    Site() {
        host::Connection connection("site.db", host::Connection::Mode::kCreate);
        host::CreateTables(connection);
    }

    host::WebAnswer Ask(const host::WebRequest& request) {
        said_.str("");
        return pages_.Answer(request);
    }

 private:
    std::ostringstream said_;
    host::OperatorLog log_{said_, true};
    host::WebPages pages_{"site.db", log_};
};

std::string Line(std::string_view& bytes) {
    const size_t end = std::min(bytes.find('\n'), bytes.size());
    std::string line(bytes.substr(0, end));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
    return line;
}

}  // namespace

// An address, a line of cookies, and a form.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz::InOwnFolder folder;
    static Site site;
    static uint64_t source = 0;
    std::string_view bytes = fuzz::View(data, size);
    host::WebRequest request;
    request.target = Line(bytes);
    request.cookies = Line(bytes);
    request.body = std::string(bytes);
    request.source = std::to_string(++source);  // each may try to sign in
    for (const char* method : {"GET", "POST"}) {
        request.method = method;
        const host::WebAnswer answer = site.Ask(request);
        Expect(answer.status < 500, "nothing goes wrong");
        Expect(answer.cookie.empty() || answer.cookie.find("=;") != std::string::npos,
               "nobody is let in");
        Expect(answer.location.empty() || answer.location == "/sign-in", "nobody is led elsewhere");
        Expect(answer.policy != nullptr, "nothing is loaded from elsewhere");
    }
    return 0;
}
