#pragma once
// The one place where Qt's key events become the operator key table's codes
// (OperatorKeyboard), so that the table reads the same on every system.
// Letters, digits and the usual punctuation get the codes of the same keys
// in that table's set; keys with no code there get `unmappedKey`, which the
// table answers as a section shortcut like any other key.
//
// Thread: pure functions.

#include <QtCore/qnamespace.h>

#include <cstdint>

namespace velarion {

inline constexpr std::uint16_t unmappedKey = 0xFFFF;

// `key` is a Qt::Key; keypad keys are told apart by Qt::KeypadModifier.
std::uint16_t keyCodeFromQt(int key, Qt::KeyboardModifiers modifiers);
// The modifier that turns a key into a menu command: Ctrl on Linux.
bool hasCommandModifier(Qt::KeyboardModifiers modifiers);

} // namespace velarion
