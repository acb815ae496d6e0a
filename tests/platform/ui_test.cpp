// The UI seam: the scripted implementation and the route of an unhandled failure.

#include "platform/scripted_ui.h"

#include "fixtures.h"

#include <gtest/gtest.h>

namespace {

using namespace platform;
using testing_support::SeamTest;

TEST_F(SeamTest, ABoxWithNoTitleShowsTheApplicationTitleAndAnswersItsDefault) {
    EXPECT_EQ(ShowMsg("Plain"), Msg::OK);
    EXPECT_EQ(ShowMsg("Destroy?", Msg::YesNo | Msg::Question | Msg::DefaultButton2, "Delete"),
              Msg::No);
    ui.answers.push_back(Msg::Yes);
    EXPECT_EQ(ShowMsg("Again?", Msg::YesNo | Msg::DefaultButton2), Msg::Yes);
    using Box = std::tuple<QString, int, int, int, int>;  // title, buttons, icon, default, answer
    std::vector<Box> shown;
    for (const auto& m : ui.messages) {
        shown.emplace_back(m.title, m.buttons, m.icon, m.defaultButton, m.answer);
    }
    EXPECT_EQ(shown, (std::vector<Box>{{"Orvane Administration", Msg::OKOnly, 0, 1, Msg::OK},
                                       {"Delete", Msg::YesNo, Msg::Question, 2, Msg::No},
                                       {"Orvane Administration", Msg::YesNo, 0, 2, Msg::Yes}}));
}

TEST_F(SeamTest, AnUnhandledFailureShowsTheRuntimesTextAndEndsTheRun) {
    EXPECT_THROW(runHandler([] { throw rt::Error::standard(rt::SubscriptOutOfRange); }), RunEnded);
    EXPECT_TRUE(ui.ended);
    EXPECT_EQ(ui.exitStatus, kExitFailure);
    EXPECT_TRUE(testing_support::saidOnly(ui, "Subscript out of range"));
}

TEST(Seam, WithoutASeamAnyUseIsAnUnsetObject) {
    setUi(nullptr);
    EXPECT_EQ(testing_support::errorOf([] { ShowBusy(); }), rt::ObjectNotSet);
}

}  // namespace
