// The engine's figures, as a node exporter collects them.
#include "host/node/metrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace host {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using Outcome = TracedPage::Outcome;

Send SendWith(Outcome outcome, int64_t seconds, const char* port = "COM 1") {
    Send send;
    send.at = 978948000;
    send.seconds = seconds;
    send.port = port;
    send.outcome = outcome;
    return send;
}

TEST(Metrics, CountEverySendingByItsOutcome) {
    Metrics metrics;
    metrics.Count(SendWith(Outcome::kSent, 40));
    metrics.Count(SendWith(Outcome::kSent, 20, ""));
    metrics.Count(SendWith(Outcome::kNotSent, 5));
    metrics.Count(SendWith(Outcome::kCutOff, 1));
    metrics.Count(SendWith(Outcome::kOutsideHours, 0));
    metrics.Count(SendWith(Outcome::kDialled, 10, "COM 2"));
    metrics.ended["undelivered"] = 2;
    metrics.given_up = 7;
    metrics.pending = 3;
    metrics.started = 978940000;
    metrics.heartbeat = 978941111;
    const std::string text = AsText(metrics, Encoding::kLatin1);
    const std::string pages = "\npagerfwd_pages_total{result=";
    EXPECT_THAT(text, HasSubstr(pages + "\"sent\",port=\"COM 1\"} 1\n"));
    EXPECT_THAT(text, HasSubstr(pages + "\"sent\",port=\"none\"} 1\n"));
    EXPECT_THAT(text, HasSubstr(pages + "\"failed\",port=\"COM 1\"} 2\n"));
    EXPECT_THAT(text, HasSubstr(pages + "\"outside_hours\",port=\"COM 1\"} 1\n"));
    EXPECT_THAT(text, HasSubstr(pages + "\"dialled\",port=\"COM 2\"} 1\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_pages_ended_total{end=\"undelivered\"} 2\n"));
    EXPECT_EQ(2U, metrics.Total(kResultSent));
    EXPECT_EQ(0U, Metrics().Total(kResultSent));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_pages_given_up_total 7\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_line_seconds_total 76\n"));
    EXPECT_THAT(text, HasSubstr("\n# TYPE pagerfwd_pages_pending gauge\n"
                                "pagerfwd_pages_pending 3\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_start_time_seconds 978940000\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_heartbeat_timestamp_seconds 978941111\n"));
}

TEST(Metrics, ExplainThemselvesInSentences) {
    std::istringstream text(AsText(Metrics(), Encoding::kLatin1));
    int explained = 0;
    for (std::string line; std::getline(text, line);) {
        if (line.substr(0, 6) == "# HELP") {
            EXPECT_THAT(line, MatchesRegex("# HELP pagerfwd_[a-z_]+ [A-Z].*[.]"));
            ++explained;
        }
    }
    EXPECT_LT(5, explained);
}

TEST(Metrics, TellTheLastSuccessOfEachPort) {
    Metrics metrics;
    metrics.Count(SendWith(Outcome::kSent, 40));
    metrics.Count(SendWith(Outcome::kSent, 40, ""));
    metrics.Count(SendWith(Outcome::kNotSent, 40, "COM 2"));
    const std::string text = AsText(metrics, Encoding::kLatin1);
    constexpr const char* kNamed = "\npagerfwd_last_success_timestamp_seconds";
    EXPECT_THAT(text, HasSubstr(std::string(kNamed) + "{port=\"COM 1\"} 978948000\n"));
    EXPECT_THAT(text, HasSubstr(std::string(kNamed) + "{port=\"none\"} 978948000\n"));
    EXPECT_EQ(std::string::npos, text.find(std::string(kNamed) + "{port=\"COM 2"));
}

TEST(Metrics, EscapeWhatTheFormatAsksFor) {
    Metrics metrics;
    metrics.last_success["a\"b\\c\nd\xE9"] = 1;
    EXPECT_THAT(AsText(metrics, Encoding::kLatin1),
                HasSubstr("{port=\"a\\\"b\\\\c\\nd\u00E9\"} 1"));
}

}  // namespace
}  // namespace host
