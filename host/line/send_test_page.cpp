// A test page. Tested by tests/e2e/test_page_test.cpp.
#include "host/line/send_test_page.h"
#include "host/store/tables/pagers.h"

#include "host/text/controls.h"

namespace host {

bool DialIsThePage(const std::string& number) {
    return number.empty() || number.find('@') == number.size() - 1;
}

int32_t SendTestPage(const Library& library, const std::string& database, PagerRow pager) {
    std::string name = database;
    int32_t no_alarm = 0;
    for (std::string* const text :
         {&pager.description, &pager.number, &pager.port, &pager.type, &pager.timeModel}) {
        *text = WithoutControls(*text);
    }
    FwdSpecialInfoStr info{name.data(), &no_alarm, nullptr, nullptr};
    return library.TestPager(&info, pager.description.data(), pager.number.data(),
                             pager.port.data(), pager.type.data(), pager.timeModel.data());
}

}  // namespace host
