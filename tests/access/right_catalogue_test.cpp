// The right catalogue and the reading of a level's text.

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
    static QString text(std::initializer_list<std::pair<int, char>> positions, char rest = '1') {
        QString t(245, rest);
        for (auto [p, c] : positions) {
            t[p] = c;
        }
        return t;
    }
    std::vector<int> catalogued() const {
        std::vector<int> positions;
        for (int p = 0; p < kRightSlots; ++p) {
            if (gRightAvailable(p)) {
                positions.push_back(p);
            }
        }
        return positions;
    }
};

TEST_F(CatalogueTest, TenGroupsAndSixtySixChildren) {
    load("");
    int groups = 0;
    int children = 0;
    for (int p : catalogued()) {
        (gRightGroups(p) == -1 ? groups : children)++;
    }
    EXPECT_EQ(groups, 10);
    EXPECT_EQ(children, 66);
    for (int p : {9, 46, 47, 48, 57, 58, 59, 72, 73, 85, 254}) {
        EXPECT_FALSE(gRightAvailable(p)) << p;
        EXPECT_FALSE(gRightValues(p)) << p;
        EXPECT_EQ(gRightGroups(p), 0) << p;
        EXPECT_TRUE(gRightCaptions(p).isEmpty()) << p;
    }
    EXPECT_EQ(gRightCaptions(76), "Access all Clients and Non-Clients");
    EXPECT_EQ(gRightGroups(82), 84);
    EXPECT_EQ(gRightGroups(81), 1);
    EXPECT_EQ(gRightCaptions(84), "Library");
}

TEST_F(CatalogueTest, TheTermsGoIntoTheCaptionsWhenTheCatalogueIsBuilt) {
    gTermProjects = "Engagements";
    gTermProject = "Engagement";
    load("");
    EXPECT_EQ(gRightCaptions(3), "Engagements");
    EXPECT_EQ(gRightCaptions(49), "Create/Delete Engagements");
    EXPECT_EQ(gRightCaptions(54), "Modify General Engagement Information");
    gTermProjects.clear();
    gTermProject.clear();
}

TEST_F(CatalogueTest, TheRulesOfALevelsText) {
    const struct {
        const char* what;
        QString text;
        std::vector<std::pair<int, bool>> expected;
    } cases[] = {
        {"an empty text grants everything", "", {{0, true}, {10, true}, {76, true}, {83, true}}},
        {"a denied group denies its granted children",
         text({{2, '0'}}),
         {{2, false}, {36, false}, {43, false}, {0, true}, {10, true}}},
        {"no accounts, billing or projects without contacts",
         text({{0, '0'}}),
         {{0, false},
          {1, false},
          {2, false},
          {3, false},
          {22, false},
          {81, false},
          {36, false},
          {49, false},
          {4, true},
          {60, true}}},
        {"a stray character grants", text({{76, 'x'}}, '0'), {{76, false}, {8, false}}},
        {"a stray character grants",
         text({{8, 'x'}, {76, 'y'}}, '0'),
         {{8, true}, {76, true}, {77, false}}},
        {"a 300-character text is cut to 255",
         QString(300, '0'),
         {{0, false}, {84, false}, {83, false}}},
        {"past a short text is granted",
         QString("111111110"),
         {{8, false}, {76, false}, {10, true}, {84, true}, {82, true}}},
    };
    for (const auto& c : cases) {
        load(c.text);
        for (auto [position, granted] : c.expected) {
            EXPECT_EQ(gRightValues(position), granted) << c.what << ", position " << position;
        }
    }
    EXPECT_EQ(gLevelText.size(), 255);
    load(QString(300, '0'));
    EXPECT_EQ(gLevelText, QString(255, '0'));
    EXPECT_TRUE(RightFromLevelText(255));
}

TEST_F(CatalogueTest, LevelNamesDefaultToTheirNumber) {
    execute("UPDATE sysinfo SET level10name = '', level1name = NULL");
    load("", "");
    EXPECT_EQ(gLevelNames(2), "Level 3");
    EXPECT_EQ(gLevelNames(9), "Level 10");
    EXPECT_EQ(gLevelNames(0), "Level 1");
    EXPECT_EQ(gLevelNames(1), "Assistant");
    EXPECT_EQ(count("sysinfo", "level10name = ''"), 1);  // the default is not written back
}

TEST_F(CatalogueTest, ALevelOutsideTheTenFailsInTheCaller) {
    auto rs = open("SELECT * FROM sysinfo");
    EXPECT_THROW(LoadAccessLevel(10, *rs), rt::Error);
    EXPECT_THROW(LoadAccessLevel(-1, *rs), rt::Error);
}

}  // namespace
