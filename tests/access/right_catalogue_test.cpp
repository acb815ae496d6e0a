// The right catalogue and what a level's text grants.

#include "access/right_catalogue.h"
#include "fixtures.h"
#include "settings/terminology.h"

namespace {

class CatalogueTest : public testing_support::SessionTest {
protected:
    // Loads level 3 with that text and name.
    void load(const QString& text, const QString& name = "Associate") {
        execute("UPDATE sysinfo SET level3 = '" + text + "', level3name = '" + name + "'");
        auto rs = open("SELECT * FROM sysinfo");
        rs->MoveFirst();
        LoadAccessLevel(2, *rs);
    }
};

// A position taken twice or a right dropped shows in the counts; the gaps stay free because
// other programs read the same text.
TEST_F(CatalogueTest, TenGroupsAndSixtySixChildrenKeepTheirPositions) {
    gTermProjects = "Engagements";
    gTermProject = "Engagement";
    load("");
    std::pair<int, int> groupsAndChildren;
    for (int p = 0; p < kRightSlots; ++p) {
        if (gRightAvailable(p)) {
            ++(gRightGroups(p) == -1 ? groupsAndChildren.first : groupsAndChildren.second);
        }
    }
    EXPECT_EQ(groupsAndChildren, std::pair(10, 66));
    for (int p : {9, 46, 47, 48, 57, 58, 59, 72, 73, 85, 254}) {
        EXPECT_TRUE(!gRightAvailable(p) && gRightCaptions(p).isEmpty()) << p;
    }
    EXPECT_EQ(QStringList({gRightCaptions(3), gRightCaptions(49), gRightCaptions(54)}),
              QStringList({"Engagements", "Create/Delete Engagements",
                           "Modify General Engagement Information"}));
    gTermProjects.clear();
    gTermProject.clear();
}

// "0" denies, any other character or a position past the text grants; a denied group denies its
// children, and no contacts denies accounts, billing and projects with all their children.
TEST_F(CatalogueTest, WhatALevelsTextGrants) {
    const auto with = [](QChar rest, std::initializer_list<std::pair<int, char>> positions) {
        QString text(245, rest);
        for (auto [p, c] : positions) {
            text[p] = c;
        }
        return text;
    };
    const int probed[] = {0, 1, 2, 3, 4, 8, 10, 22, 36, 49, 76, 77, 81, 82, 84};
    const std::pair<QString, QString> cases[] = {
        {"", "111111111111111"},
        {with('1', {{2, '0'}}), "110111110111111"},
        {with('1', {{0, '0'}}), "000011000011011"},
        {with('1', {{84, '0'}}), "111111111111100"},
        {with('0', {{76, 'x'}}), "000000000000000"},
        {with('0', {{8, 'x'}, {76, 'y'}}), "000001000010000"},
        {"111111110", "111110111100111"},
    };
    for (const auto& [text, granted] : cases) {
        load(text);
        QString got;
        for (int p : probed) {
            got += gRightValues(p) ? '1' : '0';
        }
        EXPECT_EQ(got, granted) << text.left(12).toStdString();
    }
    load("0");
    EXPECT_EQ(gLevelText, "0" + QString(254, ' '));
    load(QString(300, '0'));
    EXPECT_EQ(gLevelText, QString(255, '0'));
    EXPECT_TRUE(RightFromLevelText(255));
}

TEST_F(CatalogueTest, LevelNamesDefaultToTheirNumberWithoutWritingItBack) {
    execute("UPDATE sysinfo SET level10name = '', level1name = NULL");
    load("", "");
    EXPECT_EQ(QStringList({gLevelNames(0), gLevelNames(1), gLevelNames(2), gLevelNames(9)}),
              QStringList({"Level 1", "Assistant", "Level 3", "Level 10"}));
    EXPECT_EQ(count("sysinfo", "level10name = ''"), 1);
    auto rs = open("SELECT * FROM sysinfo");
    EXPECT_THROW(LoadAccessLevel(10, *rs), rt::Error);
}

}  // namespace
