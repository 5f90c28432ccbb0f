// The texts of one query's records.

#include "model/bson/shared_texts.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using bson_utils::shared_texts;
using test_support::literals::operator""_q;

constexpr int enough = 100;

shared_texts warm() {
    shared_texts texts;
    for (int i = 0; i < enough; ++i) {
        texts.fromAscii("other");
    }
    return texts;
}

bool areShared(shared_texts& texts, const std::string& text) {
    const QString first = texts.fromAscii(text);
    const QString second = texts.fromAscii(text);
    EXPECT_EQ(first, QString::fromStdString(text));
    EXPECT_EQ(second, QString::fromStdString(text));
    return first.constData() == second.constData();
}

TEST(SharedTexts, ShareTheirStorageFromTheThirtyThirdOn) {
    shared_texts texts;
    for (int i = 0; i < 16; ++i) {
        ASSERT_FALSE(areShared(texts, "water")) << i;
    }
    EXPECT_TRUE(areShared(texts, "water"));
    EXPECT_TRUE(areShared(texts, "1-0:1.8.0"));
}

TEST(SharedTexts, DoNotShareLongOnes) {
    auto texts = warm();
    EXPECT_TRUE(areShared(texts, std::string(64, 'x')));
    EXPECT_FALSE(areShared(texts, std::string(65, 'x')));
}

TEST(SharedTexts, AreEmptyButNotNullForNoCharacters) {
    auto texts = warm();
    EXPECT_EQ(texts.fromAscii(""), ""_q);
    EXPECT_FALSE(texts.fromAscii("").isNull());
}

TEST(SharedTexts, KeepEveryCharacter) {
    auto texts = warm();
    std::string all;
    for (char c = 0; c < 64; ++c) {
        all += c;
    }
    EXPECT_TRUE(areShared(texts, all));
    EXPECT_TRUE(areShared(texts, "\x7F"));
    EXPECT_EQ(texts.fromAscii(all).size(), 64);
}

TEST(SharedTexts, AreRightForMoreThanAreRemembered) {
    auto texts = warm();
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 5000; ++i) {
            const std::string text = std::to_string(i);
            ASSERT_EQ(texts.fromAscii(text), QString::fromStdString(text));
        }
    }
}

TEST(SharedTexts, StayAsTheyAreWhenOneIsChanged) {
    auto texts = warm();
    QString changed = texts.fromAscii("water");
    changed += u'!';
    EXPECT_EQ(texts.fromAscii("water"), "water"_q);
}

} // namespace
