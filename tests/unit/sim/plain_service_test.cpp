// The plain paging service's dialogue, and the pager that only beeps.
#include "sim/centres/plain_service.h"

#include <gmock/gmock.h>

#include "sim/centres/signal_service.h"
#include "tests/unit/sim/fakes.h"

namespace pagersim {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PlainServiceTest : public ::testing::Test {
 protected:
    std::string Answer(const PlainOptions& options = {}) {
        service_ = std::make_unique<PlainService>(options);
        service_->Answered(call_);
        return call_.Hear();
    }

    std::string To(std::string_view bytes) {
        service_->Heard(bytes);
        return call_.Hear();
    }

    FakeCall call_;
    std::unique_ptr<PlainService> service_;
};

TEST_F(PlainServiceTest, NumberMessageConfirmation) {
    EXPECT_EQ("", Answer());
    EXPECT_EQ(">", To("4711\r"));
    EXPECT_EQ("SEND (J/N)?", To("FIRE\r"));
    EXPECT_THAT(call_.Pages(), IsEmpty()) << "not yet confirmed";
    EXPECT_EQ("", To("jy\r"));
    EXPECT_THAT(call_.Pages(), ElementsAre("4711: FIRE"));
    call_.Hear(300ms);
    EXPECT_TRUE(call_.HungUp());
}

TEST_F(PlainServiceTest, GreetingWithTheQuestionComesAtOnce) {
    PlainOptions options;
    options.greeting = "CITY PAGING\r\n";
    options.question = true;
    EXPECT_EQ("CITY PAGING\r\nCONTINUE (J/N)?", Answer(options));
    EXPECT_EQ(">", To("jy\r"));
    EXPECT_EQ(">", To("4711\r"));
}

TEST_F(PlainServiceTest, NoToTheQuestionEndsTheCall) {
    PlainOptions options;
    options.question = true;
    Answer(options);
    EXPECT_EQ("", To("4711\r"));
    call_.Hear(300ms);
    EXPECT_TRUE(call_.HungUp());
}

TEST_F(PlainServiceTest, YesBehindTheNumberSendsAnEmptyPage) {
    Answer();
    To("4711\r");
    To("jy");
    EXPECT_THAT(call_.Pages(), IsEmpty());
    To("\r");
    EXPECT_THAT(call_.Pages(), ElementsAre("4711: "));
}

TEST_F(PlainServiceTest, WithoutConfirmationNothingIsDelivered) {
    Answer();
    To("4711\r");
    To("FIRE\r");
    To("n\r");
    EXPECT_THAT(call_.Pages(), IsEmpty());
    EXPECT_THAT(call_.Notes(), ElementsAre("not confirmed"));
}

TEST_F(PlainServiceTest, EmptyLineIsNoYes) {
    Answer();
    To("4711\r");
    To("FIRE\r");
    To("\r");
    EXPECT_THAT(call_.Pages(), IsEmpty());
}

TEST_F(PlainServiceTest, EveryFormOfYes) {
    for (const char* yes : {"j", "J", "y", "Y", "jy", "JY", "yes"}) {
        Answer();
        To("4711\r");
        To("FIRE\r");
        To(std::string(yes) + "\r");
    }
    EXPECT_EQ(7U, call_.Pages().size());
}

TEST_F(PlainServiceTest, MayStayOnTheLine) {
    PlainOptions options;
    options.hangs_up = false;
    Answer(options);
    To("4711\r");
    To("jy\r");
    call_.Hear(60'000ms);
    EXPECT_FALSE(call_.HungUp());
    EXPECT_EQ("", To("4711\r")) << "and has nothing more to say";
}

TEST_F(PlainServiceTest, OwnWords) {
    PlainOptions options;
    options.prompt = "NO>";
    options.confirmation = "OK?";
    options.question = true;
    options.question_text = "READY?";
    EXPECT_EQ("READY?", Answer(options));
    EXPECT_EQ("NO>", To("j\r"));
    EXPECT_EQ("NO>", To("1\r"));
    EXPECT_EQ("OK?", To("x\r"));
}

TEST_F(PlainServiceTest, MayEcho) {
    PlainOptions options;
    options.echo = true;
    Answer(options);
    EXPECT_EQ("4711\r>", To("4711\r"));
}

TEST_F(PlainServiceTest, LineFeedAndNulMeanNothing) {
    Answer();
    EXPECT_EQ(">", To({"47\n11\0\r\n", 8}));
    To("jy\r");
    EXPECT_THAT(call_.Pages(), ElementsAre("4711: "));
}

TEST(SignalService, TheCallIsThePage) {
    FakeCall call;
    SignalService().Answered(call);
    EXPECT_THAT(call.Pages(), ElementsAre("5550103: "));
}

}  // namespace
}  // namespace pagersim
