// Sites out of the database, as files: what is imported comes out again, and the other way round.
#include "host/site/site_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "host/site/hours.h"
#include "host/site/read_back.h"
#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "host/site/words.h"
#include "host/text/encoding.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

// A site of random parts and texts, in which nothing is wrong that would keep it from being
// imported.
class RandomSite {
 public:
    explicit RandomSite(unsigned seed) : random_(seed) {}

    Site Make() {
        Site site;
        shift_jis_ = Below(4) == 0;
        site.encoding.value = shift_jis_ ? "shift_jis" : "latin1";
        site.notify = MakeCommand();
        site.answers.value = Below(2) == 0;
        site.heartbeat = MakeCommand();
        site.page_resolved.value = Below(2) == 0;
        for (size_t i = Below(3); i > 0; --i) {
            site.ports.push_back(MakePort("COM " + std::to_string(site.ports.size() + 1)));
        }
        for (size_t i = Below(4); i > 0; --i) {
            site.timeModels.push_back(MakeHours());
        }
        for (size_t i = Below(5); i > 0; --i) {
            site.pagers.push_back(MakePager());
        }
        for (size_t i = Below(3); i > 0; --i) {
            site.routes.push_back(MakeRoute());
        }
        return site;
    }

 private:
    size_t Below(size_t limit) { return random_() % limit; }

    std::string Text() {
        static const std::vector<std::string> latin = {"a",        "Z",  "0", " ", "\"", "\\",
                                                       "'",        "#",  "=", "[", "]",  "\xC2\xA3",
                                                       "\xC3\xA9", "\n", ",", "{", "%",  "\\u0041"};
        static const std::vector<std::string> japanese = {
            "a", "\"", "\\", "\xEF\xBD\xB1", "\xE3\x83\x9D", "7", " "};
        const std::vector<std::string>& letters = shift_jis_ ? japanese : latin;
        std::string text;
        for (size_t i = Below(12); i > 0; --i) {
            text += letters[Below(letters.size())];
        }
        return text;
    }

    template <size_t count>
    std::string OneOf(const Word (&words)[count]) {
        return words[Below(count)].word;
    }

    LineSettings MakeLine() {
        return {{5 + static_cast<int64_t>(Below(4)), 0},
                {OneOf(kParities), 0},
                {1 + static_cast<int64_t>(Below(2)), 0}};
    }

    SmsService MakeService() { return {{OneOf(kProtocols), 0}, {Text(), 0}, MakeLine()}; }

    Port MakePort(const std::string& name) {
        Port port;
        port.name.value = name;
        port.device.value = Below(2) == 0 ? "" : Text();
        port.baud.value = kSpeeds[Below(std::size(kSpeeds))];
        port.flow.value = OneOf(kFlows);
        port.modem.value = Below(4) != 0;
        port.init.value = Text();
        port.reset.value = Text();
        port.pager = {{Text(), 0}, {Text(), 0}, MakeLine()};
        port.sms1 = MakeService();
        port.sms2 = MakeService();
        return port;
    }

    Command MakeCommand() {
        Command command;
        for (size_t i = Below(3); i > 0; --i) {
            command.push_back({Text(), 0});
        }
        return command;
    }

    Pager MakePager() {
        Pager pager;
        pager.description.value = Text();
        pager.owner.value = Text();
        pager.port.value = Below(2) == 0 ? "" : "COM 1";
        pager.type.value = OneOf(kPagerTypes);
        pager.number.value = Text();
        pager.retries.value = static_cast<int64_t>(Below(9));
        pager.delay.value = static_cast<int64_t>(Below(2000));
        pager.hours.value = Text();
        return pager;
    }

    TimeModel MakeHours() {
        TimeModel model;
        model.name.value = Text();
        model.all.value = Below(4) == 0;
        if (!model.all.value) {
            for (const char* days : {"mon", "tue-thu", "fri", "sat-sun"}) {
                if (Below(3) != 0) {
                    const size_t from = Below(23);
                    const std::string hours =
                        std::to_string(from) + "-" + std::to_string(from + 1 + Below(24 - from));
                    model.days.push_back({{days, 0}, {hours, 0}});
                }
            }
        }
        return model;
    }

    Route MakeRoute() {
        Route route;
        route.groups.value = Text();
        for (size_t i = Below(3); i > 0; --i) {
            route.severities.push_back({OneOf(kSeverities), 0});
        }
        for (size_t i = Below(3); i > 0; --i) {
            route.pagers.push_back({Text(), 0});
        }
        return route;
    }

    std::mt19937 random_;
    bool shift_jis_ = false;
};

class SiteWriter : public HostTest {
 protected:
    void Import(const Site& site) const {
        Lease lease(database);
        StoreSite(lease.Database(), site);
    }
    void Import(const std::string& text) const {
        const ReadSite read = ParseSite(text);
        ASSERT_THAT(read.findings.All(), IsEmpty()) << text;
        Import(read.site);
    }

    std::string Export() const {
        Lease lease(database);
        const ReadBack read = ReadSiteBack(lease.Database());
        EXPECT_THAT(read.findings.All(), IsEmpty());
        return WriteSite(read.site);
    }

    // Every cell of the site's tables.
    std::string Cells() const {
        Lease lease(database);
        std::string cells;
        for (const char* table :
             {"AlarmFwd_COMProperties", "AlarmFwd_PagerSetting", "AlarmFwd_TMSetting",
              "Host_Routes", "Host_RoutePagers", "Host_Settings"}) {
            const int columns = static_cast<int>(Columns(lease.Database(), table));
            Statement statement(lease.Database(), std::string("SELECT * FROM ") + table);
            while (statement.Step()) {
                for (int column = 0; column < columns; ++column) {
                    cells += std::string(statement.Text(column)) + "|";
                }
                cells += "\n";
            }
        }
        return cells;
    }

    static int64_t Columns(Connection& connection, const char* table) {
        Statement statement(connection, "SELECT count(*) FROM pragma_table_info(?)");
        statement.Bind(table).Step();
        return statement.Number(0);
    }
};

TEST_F(SiteWriter, WritesWhatImportTakes) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        Import(RandomSite(seed).Make());
        const std::string cells = Cells();
        const std::string text = Export();
        ASSERT_NO_FATAL_FAILURE(Import(text)) << seed;
        ASSERT_EQ(cells, Cells()) << seed;
        ASSERT_EQ(text, Export()) << seed;
    }
}

TEST_F(SiteWriter, WritesTheSameTextOfWhatItWrote) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        const Site site = RandomSite(seed).Make();
        const std::string text = WriteSite(site);
        const ReadSite read = ParseSite(text);
        ASSERT_THAT(read.findings.All(), IsEmpty()) << text;
        ASSERT_EQ(text, WriteSite(read.site));
        ASSERT_EQ(site.pagers.size(), read.site.pagers.size());
        for (size_t i = 0; i < site.pagers.size(); ++i) {
            ASSERT_EQ(site.pagers[i].description.value, read.site.pagers[i].description.value);
            ASSERT_EQ(site.pagers[i].number.value, read.site.pagers[i].number.value);
            ASSERT_EQ(site.pagers[i].delay.value, read.site.pagers[i].delay.value);
        }
    }
}

TEST_F(SiteWriter, WritesTheExample) {
    const std::string example = ReadFile(EXAMPLE_SITE);
    Import(example);
    const std::string cells = Cells();
    const std::string text = Export();
    EXPECT_THAT(text, HasSubstr("\n[[hours]]\nname = \"office\"\nmon-fri = \"8-18\"\n"
                                "sat = \"9-12,14-16\"\n"));
    EXPECT_THAT(text, HasSubstr("\n[[pager]]\ndescription = \"duty phone\"\nowner = \"Anna\"\n"
                                "port = \"COM 1\"\ntype = \"sms1\"\nnumber = \"5550111\"\n"
                                "retries = 5\ndelay = 45\nhours = \"always\"\n"));
    Import(text);
    EXPECT_EQ(cells, Cells());
    EXPECT_EQ(text, Export());
}

TEST_F(SiteWriter, WritesAnEmptySite) {
    EXPECT_EQ("encoding = \"latin1\"\n", Export());
}

TEST(TomlText, IsReadAsItWas) {
    for (uint32_t code = 1; code < 0x300; ++code) {
        std::string text = "a";
        if (code < 0x80) {
            text += static_cast<char>(code);
        } else {
            text += static_cast<char>(0xC0 | (code >> 6));
            text += static_cast<char>(0x80 | (code & 0x3F));
        }
        EXPECT_EQ(text, ParseSite("encoding = " + TomlText(text)).site.encoding.value) << code;
    }
    EXPECT_EQ("\"\xEF\xBF\xBD\"", TomlText("\xFF"));
}

TEST(TomlText, ShowsWhatCanBeSeen) {
    EXPECT_EQ("\"\\u001F ~\\u007F\\u009F\xC2\xA0\"", TomlText("\x1F ~\x7F\xC2\x9F\xC2\xA0"));
}

TEST(WrittenHours, AreReadAsTheyWere) {
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        Week week;
        for (size_t hour = 0; hour < week.size(); ++hour) {
            const size_t like = hour >= kHoursInDay && random() % 50 != 0 ? hour - kHoursInDay : 0;
            week.set(hour, like != 0 ? week.test(like) : random() % 3 == 0);
        }
        Week read;
        for (const WrittenHours& written : WriteWeek(week)) {
            const Day day = ParseHours(written.hours);
            for (const size_t index : ParseDays(written.days)) {
                for (size_t hour = 0; hour < kHoursInDay; ++hour) {
                    read.set(index * kHoursInDay + hour, day.test(hour));
                }
            }
        }
        ASSERT_EQ(week, read);
    }
    EXPECT_EQ("24h", WriteHours(Day().set()));
    EXPECT_EQ("none", WriteHours(Day()));
}

}  // namespace
}  // namespace host
