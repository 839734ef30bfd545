// Ten thousand pending pages: what is shown of them costs little more than to read which they are.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>

#include "host/store/tables/events.h"
#include "tests/unit/host/web_fixture.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr int kPages = 10000;

class TheCrowd : public WebTest {
 protected:
    TheCrowd() {
        SignIn("look");
        WriteTransaction transaction(connection);
        for (int i = 0; i < kPages; ++i) {
            const std::string number = std::to_string(kNow + i);
            AddAlarm(number, "2", "ops", kNow + i);
            AddDelivery(number, 0, "duty", i % 2 == 0 ? "NULL" : "1");
            if (i % 2 != 0) {
                AddEvent(number);
            }
        }
        transaction.Commit();
    }
    void AddEvent(const std::string& alarm) {
        Statement(connection,
                  "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState,"
                  " PagerRetries) VALUES (?, 'ops', 'duty', '2', '0')")
            .Bind(alarm)
            .Run();
    }
    // Of this process; the least of some tries, since others only ever add to it.
    static double Seconds(const std::function<void()>& what) {
        double least = 1000;
        for (int i = 0; i < 3; ++i) {
            const std::clock_t begun = std::clock();
            what();
            least = std::min(least, static_cast<double>(std::clock() - begun) / CLOCKS_PER_SEC);
        }
        return least;
    }
};

TEST_F(TheCrowd, IsShownPieceByPiece) {
    const std::string first = Get("/pages").body;
    EXPECT_THAT(first, AllOf(HasSubstr("Pending: 10000<"), HasSubstr(">978948000</a>"),
                             HasSubstr(">978948049</a>"), Not(HasSubstr(">978948050</a>"))));
    EXPECT_THAT(first, HasSubstr("href=\"/pages?from=978948049.0."));
    EXPECT_THAT(Get("/pages?from=978957900.1.0").body,
                AllOf(HasSubstr(">978957901</a>"), HasSubstr(">978957950</a>"),
                      Not(HasSubstr(">978957900</a>"))));
}

TEST_F(TheCrowd, CostsLittleMoreThanToReadWhichTheyAre) {
    const double read = Seconds([this] { OwedPages(connection); });
    const double shown = Seconds([this] { Get("/pages"); });
    const double middle = Seconds([this] { Get("/pages?from=978953000.1.0"); });
    const double overview = Seconds([this] { Get("/"); });
    std::printf(
        "ten thousand pending: read in %.0f ms; shown %.1f times that, from the middle "
        "%.1f, the overview %.1f\n",
        read * 1000, shown / read, middle / read, overview / read);
    EXPECT_LT(shown, read * 4);
    EXPECT_LT(middle, read * 4);
    EXPECT_LT(overview, read * 20);
}

}  // namespace
}  // namespace host
