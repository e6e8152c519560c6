#include "Live/OperatorKeyboard.h"

namespace velarion::OperatorKeyboard {

std::optional<OperatorKeyAction> action(std::uint16_t keyCode, const OperatorKeyContext& context) {
    using enum OperatorKeyAction;
    namespace key = operatorKeyCode;
    if (!context.hasShow || context.hasNativeDialog || context.hasCommandModifier) return std::nullopt;
    // Panic is never out of reach: any window, text field or editor.
    if (keyCode == key::escape) return panic;
    if (!context.isMainWindow || context.isSlideEditor || context.isEditingText) return std::nullopt;
    switch (keyCode) {
    case key::space: return go;
    case key::returnKey:
    case key::keypadEnter: return armNext;
    case key::rightArrow:
    case key::pageDown: return nextSlide;
    case key::leftArrow:
    case key::pageUp: return previousSlide;
    case key::period:
    case key::s: return toggleSafeSlide;
    case key::downArrow: return selectNext;
    case key::upArrow: return selectPrevious;
    default: return sectionShortcut;
    }
}

} // namespace velarion::OperatorKeyboard
