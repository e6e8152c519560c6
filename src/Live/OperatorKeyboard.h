#pragma once
// The operator's single keys during a show, as a pure table with no tie to
// a window. Key codes are the 16-bit virtual key codes of the table below
// (Space 49, Esc 53, …); each platform maps its key events to them in one
// place. The application turns the answers into engine commands.
//
// Thread: pure functions and plain values, any thread.

#include "LiveModel/EnumNames.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velarion {

enum class OperatorKeyAction {
    go, panic, armNext, nextSlide, previousSlide, toggleSafeSlide, selectNext, selectPrevious,
    sectionShortcut
};
VELARION_ENUM_NAMES(OperatorKeyAction, "go", "panic", "armNext", "nextSlide", "previousSlide",
                    "toggleSafeSlide", "selectNext", "selectPrevious", "sectionShortcut");

namespace operatorKeyCode {
inline constexpr std::uint16_t s = 1;
inline constexpr std::uint16_t returnKey = 36;
inline constexpr std::uint16_t period = 47;
inline constexpr std::uint16_t space = 49;
inline constexpr std::uint16_t escape = 53;
inline constexpr std::uint16_t keypadEnter = 76;
inline constexpr std::uint16_t pageUp = 116;
inline constexpr std::uint16_t pageDown = 121;
inline constexpr std::uint16_t leftArrow = 123;
inline constexpr std::uint16_t rightArrow = 124;
inline constexpr std::uint16_t downArrow = 125;
inline constexpr std::uint16_t upArrow = 126;
} // namespace operatorKeyCode

struct OperatorKeyContext {
    bool hasShow = false;
    bool isMainWindow = false;
    bool isSlideEditor = false;
    bool isEditingText = false;
    bool hasNativeDialog = false;
    bool hasCommandModifier = false;
};

namespace OperatorKeyboard {

// The action of a key press; none when the key is not the operator's here.
std::optional<OperatorKeyAction> action(std::uint16_t keyCode, const OperatorKeyContext& context);

inline constexpr std::string_view helpLine =
    "Space GO · Esc Panic · ← → slides · . safe slide · V C B jump to song sections";

} // namespace OperatorKeyboard

} // namespace velarion
