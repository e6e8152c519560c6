// The operator's key table in every situation a key can arrive in, and the
// page that follows what is on air.

#include "Live/OperatorKeyboard.h"
#include "Live/OperatorViewFollow.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using enum OperatorKeyAction;
namespace key = operatorKeyCode;
using Answer = std::optional<OperatorKeyAction>;

constexpr OperatorKeyContext mainWindow{.hasShow = true, .isMainWindow = true};

// Situations other than the plain main window, and what they still allow.
struct Situation {
    const char* name;
    OperatorKeyContext context;
    bool allowsPanic;
};
constexpr Situation restricted[] = {
    {"no show", {.hasShow = false, .isMainWindow = true}, false},
    {"native dialog", {.hasShow = true, .isMainWindow = true, .hasNativeDialog = true}, false},
    {"command modifier", {.hasShow = true, .isMainWindow = true, .hasCommandModifier = true}, false},
    {"other window", {.hasShow = true, .isMainWindow = false}, true},
    {"slide editor", {.hasShow = true, .isMainWindow = true, .isSlideEditor = true}, true},
    {"editing text", {.hasShow = true, .isMainWindow = true, .isEditingText = true}, true},
};

TEST(OperatorKeyboard, TheTableInTheMainWindow) {
    const std::pair<std::uint16_t, Answer> table[] = {
        {key::space, go}, {key::escape, panic}, {key::returnKey, armNext}, {key::keypadEnter, armNext},
        {key::rightArrow, nextSlide}, {key::pageDown, nextSlide}, {key::leftArrow, previousSlide},
        {key::pageUp, previousSlide}, {key::period, toggleSafeSlide}, {key::s, toggleSafeSlide},
        {key::downArrow, selectNext}, {key::upArrow, selectPrevious},
        {9 /* V */, sectionShortcut}, {0 /* A */, sectionShortcut}, {48 /* Tab */, sectionShortcut},
    };
    for (const auto& [code, expected] : table)
        EXPECT_EQ(OperatorKeyboard::action(code, mainWindow), expected) << "key " << code;
}

TEST(OperatorKeyboard, EscIsTheOnlyKeyOutsideTheMainWindowAndNothingPassesTheGates) {
    for (const Situation& situation : restricted) {
        for (std::uint16_t code = 0; code < 128; ++code) {
            const Answer expected = code == key::escape && situation.allowsPanic ? Answer(panic) : std::nullopt;
            EXPECT_EQ(OperatorKeyboard::action(code, situation.context), expected)
                << situation.name << ", key " << code;
        }
    }
}

} // namespace
} // namespace velarion
