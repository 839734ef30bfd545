// The engine's figures, as a node exporter collects them.
#include "host/service/metrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/support/temp_dir.h"

namespace host {
namespace {

using ::testing::HasSubstr;
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
    metrics.given_up = 7;
    metrics.pending = 3;
    metrics.started = 978940000;
    const std::string text = AsText(metrics, Encoding::kLatin1);
    EXPECT_THAT(text, HasSubstr("\npagerfwd_pages_total{result=\"sent\"} 2\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_pages_total{result=\"failed\"} 2\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_pages_total{result=\"outside_hours\"} 1\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_pages_given_up_total 7\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_line_seconds_total 66\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_pages_pending 3\n"));
    EXPECT_THAT(text, HasSubstr("\npagerfwd_start_time_seconds 978940000\n"));
}

TEST(Metrics, TellTheLastSuccessOfEachPort) {
    Metrics metrics;
    metrics.Count(SendWith(Outcome::kSent, 40));
    metrics.Count(SendWith(Outcome::kSent, 40, ""));
    metrics.Count(SendWith(Outcome::kNotSent, 40, "COM 2"));
    const std::string text = AsText(metrics, Encoding::kLatin1);
    constexpr const char* kName = "\npagerfwd_last_success_timestamp_seconds";
    EXPECT_THAT(text, HasSubstr(std::string(kName) + "{port=\"COM 1\"} 978948000\n"));
    EXPECT_THAT(text, HasSubstr(std::string(kName) + "{port=\"any\"} 978948000\n"));
    EXPECT_EQ(std::string::npos, text.find("COM 2"));
}

TEST(Metrics, EscapeWhatTheFormatAsksFor) {
    Metrics metrics;
    metrics.last_success["a\"b\\c\nd\xE9"] = 1;
    EXPECT_THAT(AsText(metrics, Encoding::kLatin1),
                HasSubstr("{port=\"a\\\"b\\\\c\\nd\u00E9\"} 1"));
}

TEST(Metrics, ArePutInThePlaceOfTheFileBefore) {
    const test_support::TempDir folder;
    WriteFileAtomically("figures.prom", "one\n");
    WriteFileAtomically("figures.prom", "two\n");
    std::ostringstream text;
    text << std::ifstream("figures.prom").rdbuf();
    EXPECT_EQ("two\n", text.str());
    EXPECT_FALSE(std::filesystem::exists("figures.prom.new"));
    EXPECT_THROW(WriteFileAtomically("no/such/folder/f", "x"), std::runtime_error);
}

}  // namespace
}  // namespace host
