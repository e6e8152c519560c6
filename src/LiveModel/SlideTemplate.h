#pragma once
// The starting boxes of a new made slide, by template, and the fixed boxes
// that the older layouts draw. Templates are stored by case name; `name` is
// the operator's label.
//
// Thread: pure functions over plain values; any thread.

#include "LiveModel/DeckInfo.h"
#include "LiveModel/EnumNames.h"
#include "LiveModel/TextBox.h"

#include <string_view>
#include <vector>

namespace velarion {

enum class SlideTemplate {
    title,
    titleAndText,
    statement,
    speakerIntro,
    agenda,
    thankYou,
    quote,
    solid
};
VELARION_ENUM_NAMES(SlideTemplate, "title", "titleAndText", "statement", "speakerIntro", "agenda",
                    "thankYou", "quote", "solid");

namespace slideTemplate {

std::string_view name(SlideTemplate slideTemplate);

// The template's boxes, each with a new id. `title` fills the first box and
// `text` the second (the only box of a statement); an empty argument takes
// the template's default text.
std::vector<TextBox> boxes(SlideTemplate slideTemplate, std::string_view title,
                           std::string_view text);

// The template's boxes holding exactly `title` and `text`, empty ones kept
// empty, as an older slide that stores a layout and two texts draws them. The
// ids derive from `slideID`, so one slide gives the same boxes every time.
std::vector<TextBox> fixedBoxes(SlideTemplate slideTemplate, std::string_view title,
                                std::string_view text, const Uuid& slideID);

// The template whose boxes an older layout draws.
constexpr SlideTemplate forLayout(MadeSlide::Layout layout) {
    switch (layout) {
    case MadeSlide::Layout::title:
        return SlideTemplate::title;
    case MadeSlide::Layout::titleAndText:
        return SlideTemplate::titleAndText;
    case MadeSlide::Layout::statement:
        return SlideTemplate::statement;
    case MadeSlide::Layout::solid:
        return SlideTemplate::solid;
    }
    return SlideTemplate::solid;
}

// A new slide with the template's boxes, on the nearest older layout so that
// readers that only know layouts still place it sensibly.
MadeSlide makeSlide(SlideTemplate slideTemplate, std::string_view title, std::string_view text);

} // namespace slideTemplate

} // namespace velarion
