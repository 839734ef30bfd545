// Tokens: who is let in.
#include "host/web/token.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class Tokens : public ServiceTest {
 protected:
    std::string Make(const std::string& name, const std::string& may, time_t expires = 0) {
        WriteTransaction transaction(connection);
        const std::string text = MakeToken(connection, {name, may, expires, kNow});
        transaction.Commit();
        return text;
    }
};

TEST_F(Tokens, AreKnownByTheirText) {
    const std::string text = Make("icinga", "raise,look");
    Make("maria", "manage");
    const std::optional<Token> token = TokenFor(connection, text, kNow);
    ASSERT_TRUE(token);
    EXPECT_EQ("icinga", token->name);
    EXPECT_TRUE(May(*token, kMayRaise));
    EXPECT_TRUE(May(*token, kMayLook));
    EXPECT_FALSE(May(*token, kMayAcknowledge));
    EXPECT_FALSE(May(*token, kMayManage));
}

TEST_F(Tokens, OfManagersMayAll) {
    const std::optional<Token> token = TokenFor(connection, Make("maria", "manage"), kNow);
    for (const char* right : {kMayRaise, kMayAcknowledge, kMayLook, kMayManage}) {
        EXPECT_TRUE(May(*token, right));
    }
}

TEST_F(Tokens, AreNotInTheDatabase) {
    const std::string text = Make("icinga", "raise");
    EXPECT_THAT(Rows("hash || id || name FROM Host_Tokens"),
                ElementsAre(Not(HasSubstr(text.substr(text.rfind('_') + 1)))));
    EXPECT_THAT(Rows("substr(hash, 1, 3) FROM Host_Tokens"), ElementsAre("$5$"));
}

TEST_F(Tokens, OfTheSameNameAreNeverTheSame) {
    const std::string before = Make("icinga", "raise");
    Execute("DELETE FROM Host_Tokens");
    EXPECT_NE(before, Make("icinga", "raise"));
    EXPECT_FALSE(TokenFor(connection, before, kNow));
}

TEST_F(Tokens, ThatAreWrongAreNobodys) {
    const std::string text = Make("icinga", "raise");
    std::string other = text;
    other.back() = other.back() == '0' ? '1' : '0';
    std::string longer = text + "0";
    std::string nothing(text.size(), '\0');
    for (const std::string& wrong : {std::string(), other, longer, nothing, text.substr(1),
                                     text.substr(0, text.size() - 1), " " + text.substr(1)}) {
        EXPECT_FALSE(TokenFor(connection, wrong, kNow)) << wrong;
    }
}

TEST_F(Tokens, AreOverWhenTheyAreRevoked) {
    const std::string text = Make("icinga", "raise");
    WriteTransaction transaction(connection);
    EXPECT_TRUE(RemoveToken(connection, "icinga"));
    EXPECT_FALSE(RemoveToken(connection, "icinga"));
    transaction.Commit();
    EXPECT_FALSE(TokenFor(connection, text, kNow));
}

TEST_F(Tokens, AreOverWhenTheirTimeIs) {
    const std::string text = Make("icinga", "raise", kNow + 10);
    EXPECT_TRUE(TokenFor(connection, text, kNow + 9));
    EXPECT_FALSE(TokenFor(connection, text, kNow + 10));
}

TEST_F(Tokens, TellWhenTheyWereUsedToTheMinute) {
    const std::string text = Make("icinga", "raise");
    EXPECT_EQ(0, ReadTokens(connection).at(0).used);
    TokenFor(connection, text, kNow);
    EXPECT_EQ(kNow, ReadTokens(connection).at(0).used);
    TokenFor(connection, text, kNow + 59);
    EXPECT_EQ(kNow, ReadTokens(connection).at(0).used);
    TokenFor(connection, text, kNow + 60);
    EXPECT_EQ(kNow + 60, ReadTokens(connection).at(0).used);
}

// A row that somebody else has written.
TEST_F(Tokens, WithoutAHashAreNobodys) {
    const std::string text = Make("icinga", "raise");
    for (const char* hash : {"", "*0", "x", "$5$"}) {
        Execute("UPDATE Host_Tokens SET hash = '" + std::string(hash) + "'");
        EXPECT_FALSE(TokenFor(connection, text, kNow)) << hash;
    }
}

TEST(Rights, AreWordsWithCommas) {
    EXPECT_EQ("raise", RightsIn("raise"));
    EXPECT_EQ("raise,look", RightsIn("raise,look,raise"));
    for (const char* wrong : {"", ",", ",raise", "raise,,look", "Raise", "raise look", "all"}) {
        EXPECT_EQ(std::nullopt, RightsIn(wrong)) << wrong;
    }
}

}  // namespace
}  // namespace host
