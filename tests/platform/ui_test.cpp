// The UI seam: the scripted implementation and the route of an unhandled failure.

#include "platform/scripted_ui.h"

#include "fixtures.h"

#include <gtest/gtest.h>

namespace {

using namespace platform;

class SeamFixture : public ::testing::Test {
protected:
    void SetUp() override { setUi(&ui); }
    void TearDown() override { setUi(nullptr); }
    ScriptedUi ui;
};

TEST_F(SeamFixture, ABoxWithNoTitleShowsTheApplicationTitleAndAnswersItsDefault) {
    EXPECT_EQ(ShowMsg("Plain"), Msg::OK);
    EXPECT_EQ(ShowMsg("Destroy?", Msg::YesNo | Msg::Question | Msg::DefaultButton2, "Delete"),
              Msg::No);
    ui.answers.push_back(Msg::Yes);
    EXPECT_EQ(ShowMsg("Again?", Msg::YesNo | Msg::DefaultButton2), Msg::Yes);
    ASSERT_EQ(ui.messages.size(), 3u);
    EXPECT_EQ(ui.messages[0].title, "Orvane Administration");
    EXPECT_EQ(ui.messages[1].title, "Delete");
    EXPECT_EQ(ui.messages[1].buttons, Msg::YesNo);
    EXPECT_EQ(ui.messages[1].icon, Msg::Question);
    EXPECT_EQ(ui.messages[1].defaultButton, 2);
    EXPECT_EQ(ui.messages[2].answer, Msg::Yes);
}

TEST_F(SeamFixture, AnUnhandledFailureShowsTheRuntimesTextAndEndsTheRun) {
    bool after = false;
    EXPECT_THROW(runHandler([&] {
                     throw rt::Error::standard(rt::SubscriptOutOfRange);
                     after = true;
                 }),
                 RunEnded);
    EXPECT_FALSE(after);
    EXPECT_TRUE(ui.ended);
    EXPECT_EQ(ui.exitStatus, kExitFailure);
    ASSERT_EQ(ui.texts(), std::vector<QString>{"Subscript out of range"});
    EXPECT_EQ(ui.messages[0].buttons, Msg::OKOnly);
}

TEST(Seam, WithoutASeamAnyUseIsAnUnsetObject) {
    setUi(nullptr);
    EXPECT_EQ(testing_support::errorOf([] { ShowBusy(); }), rt::ObjectNotSet);
}

}  // namespace
