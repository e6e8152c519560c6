// Qt's key events through the one mapping into the operator's key table:
// the keys an operator presses on a Linux keyboard land on their actions.

#include "Live/OperatorKeyboard.h"
#include "Platform/App/QtKeyCodes.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using enum OperatorKeyAction;

TEST(QtKeyCodes, OperatorKeysOnALinuxKeyboard) {
    struct Row {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        std::optional<OperatorKeyAction> action;
    };
    const Qt::KeyboardModifiers none;
    const Row rows[] = {
        {Qt::Key_Space, none, go},
        {Qt::Key_Escape, none, panic},
        {Qt::Key_Return, none, armNext},
        {Qt::Key_Enter, Qt::KeypadModifier, armNext},
        {Qt::Key_Right, none, nextSlide},
        {Qt::Key_PageDown, none, nextSlide},
        {Qt::Key_Left, Qt::KeypadModifier, previousSlide},
        {Qt::Key_PageUp, none, previousSlide},
        {Qt::Key_Period, none, toggleSafeSlide},
        {Qt::Key_S, Qt::ShiftModifier, toggleSafeSlide},
        {Qt::Key_Period, Qt::KeypadModifier, sectionShortcut},
        {Qt::Key_Down, none, selectNext},
        {Qt::Key_Up, none, selectPrevious},
        {Qt::Key_V, none, sectionShortcut},
        {Qt::Key_F5, none, sectionShortcut},
        {Qt::Key_Space, Qt::ControlModifier, std::nullopt},
        {Qt::Key_Escape, Qt::ControlModifier, std::nullopt},
        {Qt::Key_Space, Qt::AltModifier, go},
    };
    for (const Row& row : rows) {
        const OperatorKeyContext context{.hasShow = true, .isMainWindow = true,
                                         .hasCommandModifier = hasCommandModifier(row.modifiers)};
        EXPECT_EQ(OperatorKeyboard::action(keyCodeFromQt(row.key, row.modifiers), context), row.action)
            << "Qt key " << std::hex << row.key;
    }
}

} // namespace
} // namespace velarion
