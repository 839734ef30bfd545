// Alerts of Alertmanager, and the templates by which they become alarms.
#include "host/intake/alertmanager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "host/site/site_check.h"
#include "host/site/site_file.h"
#include "host/site/stored_alerts.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

using ::testing::HasSubstr;

std::string Filled(const std::string& text) {
    const std::map<std::string, std::string> values = {
        {"labels.team", "ops"}, {"labels.empty", ""}, {"a", "{b}"}};
    return Template(text).Fill([&values](const std::string& name) {
        const auto found = values.find(name);
        return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
    });
}

TEST(ATemplate, HasWhatCameInItsPlaces) {
    EXPECT_EQ("", Filled(""));
    EXPECT_EQ("plain", Filled("plain"));
    EXPECT_EQ("ops/1", Filled("{labels.team}/1"));
    EXPECT_EQ("<opsops>", Filled("<{labels.team}{labels.team}>"));
    EXPECT_EQ("", Filled("{labels.none}"));
    EXPECT_EQ("{b}", Filled("{a}")) << "what came is no template";
}

TEST(ATemplate, TakesTheFirstThatCame) {
    EXPECT_EQ("ops", Filled("{labels.none|labels.empty|labels.team|'x'}"));
    EXPECT_EQ("x y", Filled("{labels.none|labels.empty|'x y'}"));
    EXPECT_EQ("", Filled("{labels.none|''}"));
}

TEST(ATemplate, MayHaveBraces) {
    EXPECT_EQ("{ops}", Filled("{{{labels.team}}}"));
    EXPECT_EQ("{}", Filled("{{}}"));
}

TEST(ATemplate, ThatIsNoneSaysWhy) {
    const std::map<std::string, const char*> wrong = {{"{", "a { that nothing closes"},
                                                      {"a}", "a } that closes nothing"},
                                                      {"{}", "no place"},
                                                      {"{a{b}", "no place"},
                                                      {"{a||b}", "no place"}};
    for (const auto& [text, why] : wrong) {
        if (*why == '\0') {
            continue;
        }
        try {
            Template read(text);
            ADD_FAILURE() << text;
        } catch (const BadTemplate& error) {
            EXPECT_THAT(error.what(), HasSubstr(why)) << text;
        }
    }
}

TEST(AnAlertTemplate, NamesOnlyWhatAnAlertHas) {
    for (const char* text : {kAlertGroup, kAlertSeverity, kAlertServer, kAlertText, "{fingerprint}",
                             "{startsAt}", "{generatorURL}", "{receiver}", "{externalURL}"}) {
        EXPECT_EQ("", WhyNoAlertTemplate(text)) << text;
    }
    for (const char* text : {"{label.x}", "{labels.}", "{status}", "{", "{annotations}"}) {
        EXPECT_NE("", WhyNoAlertTemplate(text)) << text;
    }
}

std::vector<Alert> Read(const std::string& labels, const std::string& annotations = "",
                        const AlertTemplates& templates = {}) {
    return AlertsFromJson(
        R"({"version": "4", "receiver": "pagers", "alerts": [{"status": "firing", "labels": {)" +
            labels + R"(}, "annotations": {)" + annotations +
            R"(}, "startsAt": "2001-01-08T10:00:00Z", "fingerprint": "c5d0"}]})",
        templates);
}

TEST(AnAlert, IsAnAlarmAsItsTemplatesSay) {
    AlertTemplates templates;
    templates.group = "{labels.team}/{receiver}";
    templates.text = "{annotations.summary} ({fingerprint})";
    const Alert alert = Read(R"("team": "ops", "severity": "Major", "instance": "web1")",
                             R"("summary": "Full")", templates)
                            .at(0);
    EXPECT_EQ("ops/pagers", alert.alarm.group);
    EXPECT_EQ("major", alert.alarm.severity);
    EXPECT_EQ("web1", alert.alarm.server);
    EXPECT_EQ("Full (c5d0)", alert.alarm.text);
    EXPECT_EQ("alertmanager", alert.alarm.source);
    EXPECT_EQ("c5d0 2001-01-08T10:00:00Z", alert.alarm.key);
    EXPECT_FALSE(alert.resolved);
}

TEST(AnAlert, IsAsBadAsItsSeverityMeans) {
    const std::map<std::string, const char*> words = {
        {"", "critical"},     {"critical", "critical"},  {"page", "critical"}, {"error", "major"},
        {"Warning", "minor"}, {"info", "informational"}, {"P1", "unknown"},    {"minor", "minor"}};
    for (const auto& [word, severity] : words) {
        EXPECT_EQ(severity, Read("\"severity\": \"" + word + "\"").at(0).alarm.severity) << word;
    }
}

TEST(AnAlert, AlwaysHasAText) {
    EXPECT_EQ("an alert without a text", Read("").at(0).alarm.text);
    EXPECT_EQ("Disk", Read(R"("alertname": "Disk")").at(0).alarm.text);
    EXPECT_EQ("b", Read("", R"("summary": "", "description": "b")").at(0).alarm.text);
    EXPECT_EQ("ALERT/000", Read("").at(0).alarm.group);
}

TEST(AnAlert, IsNotLostForItsLength) {
    const std::string longest(300000, 'x');
    const Alert alert = Read("", "\"summary\": \"" + longest + "\"").at(0);
    EXPECT_EQ(kLongestText, alert.alarm.text.size());
    EXPECT_NO_THROW(Checked(alert.alarm, Encoding::kLatin1));
}

TEST(AnAlert, MayHaveLabelsOfAnyKind) {
    EXPECT_EQ("Disk",
              Read(R"("alertname": "Disk", "severity": 7, "instance": [1])").at(0).alarm.text);
}

// --- In the site file and the database.

TEST(AlertTemplatesOfASite, AreChecked) {
    ReadSite read = ParseSite("[alertmanager]\ntext = \"{label.x}\"\n");
    CheckSite(read.site, read.findings);
    std::vector<std::string> found;
    for (const Finding& finding : read.findings.All()) {
        found.push_back(std::to_string(finding.line) + ": " + finding.what);
    }
    EXPECT_THAT(found, ::testing::Contains("2: [alertmanager]: text: an alert has no \"label.x\""));
}

class StoredAlerts : public HostTest {};

TEST_F(StoredAlerts, AreThoseOfTheSite) {
    Connection connection(database);
    EXPECT_EQ(kAlertText, ReadAlertTemplates(connection).text);
    const ReadSite read = ParseSite("[alertmanager]\ngroup = \"{labels.team}/1\"\n");
    StoreAlertTemplates(connection, read.site.alertmanager);
    EXPECT_EQ("{labels.team}/1", ReadAlertTemplates(connection).group);
    EXPECT_EQ(kAlertText, ReadAlertTemplates(connection).text);
}

TEST_F(StoredAlerts, AreTheUsualOnesWhereTheyAreNone) {
    Connection connection(database);
    for (const char* stored : {"", "x", "[]", "{\"text\": 7}", "{\"text\": \"{\"}"}) {
        WriteSetting(connection, "alertmanager", stored);
        EXPECT_EQ(kAlertText, ReadAlertTemplates(connection).text) << stored;
    }
}

// --- Instants.

TEST(AnInstant, IsTheSameInEveryZone) {
    const std::map<std::string, std::string> instants = {
        {"2001-01-08T10:00:00Z", "2001-01-08T10:00:00Z"},
        {"2001-01-08T11:00:00+01:00", "2001-01-08T10:00:00Z"},
        {"2001-01-08T00:15:30.5-09:30", "2001-01-08T09:45:30.5Z"},
        {"2001-01-08T10:00:00.120000000Z", "2001-01-08T10:00:00.12Z"},
        {"2001-01-08T10:00:00.0000000019Z", "2001-01-08T10:00:00.000000001Z"},
        {"2000-02-29T23:59:60Z", "2000-03-01T00:00:00Z"},
        {"2100-02-28T23:00:00-01:00", "2100-03-01T00:00:00Z"},
        {"2038-01-19T03:14:08Z", "2038-01-19T03:14:08Z"},
        {"9999-12-31T23:59:59Z", "9999-12-31T23:59:59Z"},
        {"0001-01-01T00:00:00Z", "0001-01-01T00:00:00Z"},
        {"0001-01-01T00:00:00+01:00", "0000-12-31T23:00:00Z"}};
    for (const auto& [text, written] : instants) {
        const std::optional<AlertInstant> instant = ReadInstant(text);
        ASSERT_TRUE(instant) << text;
        EXPECT_EQ(written, Written(*instant)) << text;
    }
}

TEST(AnInstant, IsReadAsItIsWrittenOverTenThousandYears) {
    constexpr int64_t kBegin = -62135596800;  // of the year 1
    constexpr int64_t kEnd = 253402300800;    // of the year 9999
    constexpr int64_t kStep = 97 * 86400 + 3661;
    EXPECT_EQ(kBegin, ReadInstant("0001-01-01T00:00:00Z")->seconds);
    EXPECT_EQ(int64_t{1} << 31U, ReadInstant("2038-01-19T03:14:08Z")->seconds);
    for (int64_t second = kBegin; second < kEnd; second += kStep) {
        const std::optional<AlertInstant> instant = ReadInstant(Written({second, 0}));
        ASSERT_TRUE(instant) << second;
        ASSERT_EQ(second, instant->seconds) << Written({second, 0});
    }
}

TEST(AnInstant, IsNoneWhereItCannotBeRead) {
    for (const char* wrong :
         {"", "x", "2001-01-08", "2001-01-08T10:00:00", "2001-13-08T10:00:00Z",
          "2001-01-08T24:00:00Z", "2001-01-08T10:00:00.Z", "2001-01-08T10:00:00+1:00",
          "2001-01-08T10:00:00Zx", "2001-01-08 10:00:00Z", "-001-01-08T10:00:00Z",
          "2001-01-08T10:00:00+01:60"}) {
        EXPECT_FALSE(ReadInstant(wrong)) << wrong;
    }
}

TEST(AnInstant, IsBeforeAnother) {
    EXPECT_TRUE(*ReadInstant("2001-01-08T10:00:00Z") < *ReadInstant("2001-01-08T10:00:00.5Z"));
    EXPECT_TRUE(*ReadInstant("2001-01-08T10:00:00Z") < *ReadInstant("2001-01-08T10:00:01Z"));
    EXPECT_FALSE(*ReadInstant("2001-01-08T10:00:00Z") < *ReadInstant("2001-01-08T11:00:00+01:00"));
}

TEST(AnAlert, HasAKeyThatSaysWhenItBegan) {
    const std::string alert =
        R"({"version": "4", "alerts": [{"status": "firing", "fingerprint": "a b", "startsAt": ")";
    const Alert read = AlertsFromJson(alert + R"(2001-01-08T11:00:00+01:00"}]})", {}).front();
    EXPECT_EQ("a b 2001-01-08T10:00:00Z", read.alarm.key);
    EXPECT_EQ("2001-01-08T10:00:00Z", Written(*BeganByKey(read.alarm.key)));
    const Alert other = AlertsFromJson(alert + "some day\"}]}", {}).front();
    EXPECT_EQ("a b some day", other.alarm.key) << "a key all the same";
    EXPECT_FALSE(BeganByKey(other.alarm.key));
}

}  // namespace
}  // namespace host
