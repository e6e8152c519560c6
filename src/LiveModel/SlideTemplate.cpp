#include "LiveModel/SlideTemplate.h"

#include <span>

namespace velarion {

namespace {

// Which argument of `boxes` a box shows.
enum class Fill { title, text };

struct BoxSpec {
    Fill fill;
    double x, y, width, height;
    double size;
    bool bold;
    TextAlign align;
    bool bullets;
    std::string_view defaultText;
};

using A = TextAlign;

// Geometry in unit coordinates of the slide; sizes in points on a 1920-wide
// slide. Wide boxes keep the same 0.078 margins so that slides made from
// different templates line up when the operator steps through them.
constexpr BoxSpec titleBoxes[] = {
    {Fill::title, 0.078, 0.33, 0.844, 0.24, 124, true, A::center, false, "Title"},
    {Fill::text, 0.078, 0.57, 0.844, 0.1, 52, false, A::center, false, ""},
};
constexpr BoxSpec titleAndTextBoxes[] = {
    {Fill::title, 0.078, 0.08, 0.844, 0.16, 96, true, A::left, false, ""},
    {Fill::text, 0.078, 0.31, 0.844, 0.6, 56, false, A::left, true, ""},
};
constexpr BoxSpec statementBoxes[] = {
    {Fill::text, 0.078, 0.15, 0.844, 0.7, 150, true, A::center, false, ""},
};
constexpr BoxSpec speakerIntroBoxes[] = {
    {Fill::title, 0.078, 0.56, 0.844, 0.14, 110, true, A::left, false, "Speaker name"},
    {Fill::text, 0.078, 0.7, 0.844, 0.08, 52, false, A::left, false, "Role, Company"},
};
constexpr BoxSpec agendaBoxes[] = {
    {Fill::title, 0.078, 0.08, 0.844, 0.16, 96, true, A::left, false, "Agenda"},
    {Fill::text, 0.078, 0.3, 0.844, 0.62, 60, false, A::left, true,
     "Welcome\nKeynote\nPanel\nClosing"},
};
constexpr BoxSpec quoteBoxes[] = {
    {Fill::title, 0.12, 0.2, 0.76, 0.45, 88, false, A::center, false,
     "\u201CA line worth remembering.\u201D"},
    {Fill::text, 0.12, 0.68, 0.76, 0.08, 48, false, A::center, false, ""},
};
constexpr BoxSpec thankYouBoxes[] = {
    {Fill::title, 0.078, 0.3, 0.844, 0.22, 150, true, A::center, false, "Thank you"},
    {Fill::text, 0.078, 0.54, 0.844, 0.1, 56, false, A::center, false, "to our sponsors"},
};

std::span<const BoxSpec> specs(SlideTemplate slideTemplate) {
    switch (slideTemplate) {
    case SlideTemplate::title:
        return titleBoxes;
    case SlideTemplate::titleAndText:
        return titleAndTextBoxes;
    case SlideTemplate::statement:
        return statementBoxes;
    case SlideTemplate::speakerIntro:
        return speakerIntroBoxes;
    case SlideTemplate::agenda:
        return agendaBoxes;
    case SlideTemplate::thankYou:
        return thankYouBoxes;
    case SlideTemplate::quote:
        return quoteBoxes;
    case SlideTemplate::solid:
        return {};
    }
    return {};
}

TextBox makeBox(const BoxSpec& spec, std::string text, const Uuid& id) {
    TextBox box;
    box.id = id;
    box.text = std::move(text);
    box.x = spec.x;
    box.y = spec.y;
    box.width = spec.width;
    box.height = spec.height;
    box.size = spec.size;
    box.bold = spec.bold;
    box.align = spec.align;
    box.bullets = spec.bullets;
    return box;
}

// A stable id for the box at `index` of an older slide. The version and
// variant bytes (6 and 8) are left alone so that the result is still a
// well-formed random-kind UUID.
Uuid derivedID(const Uuid& slideID, std::size_t index) {
    Uuid id = slideID;
    id.bytes[15] ^= static_cast<std::uint8_t>(index + 1);
    id.bytes[14] ^= 0xB0;
    return id;
}

MadeSlide::Layout nearestLayout(SlideTemplate slideTemplate) {
    switch (slideTemplate) {
    case SlideTemplate::titleAndText:
    case SlideTemplate::agenda:
        return MadeSlide::Layout::titleAndText;
    case SlideTemplate::statement:
    case SlideTemplate::quote:
        return MadeSlide::Layout::statement;
    case SlideTemplate::solid:
        return MadeSlide::Layout::solid;
    case SlideTemplate::title:
    case SlideTemplate::speakerIntro:
    case SlideTemplate::thankYou:
        return MadeSlide::Layout::title;
    }
    return MadeSlide::Layout::title;
}

} // namespace

std::string_view slideTemplate::name(SlideTemplate slideTemplate) {
    constexpr std::string_view names[] = {"Title",  "Title and text", "Statement", "Speaker intro",
                                          "Agenda", "Thank you",      "Quote",     "Solid"};
    return names[static_cast<int>(slideTemplate)];
}

std::vector<TextBox> slideTemplate::boxes(SlideTemplate slideTemplate, std::string_view title,
                                          std::string_view text) {
    std::vector<TextBox> result;
    for (const BoxSpec& spec : specs(slideTemplate)) {
        const std::string_view given = spec.fill == Fill::title ? title : text;
        result.push_back(
            makeBox(spec, std::string(given.empty() ? spec.defaultText : given), Uuid::random()));
    }
    return result;
}

std::vector<TextBox> slideTemplate::fixedBoxes(SlideTemplate slideTemplate, std::string_view title,
                                               std::string_view text, const Uuid& slideID) {
    std::vector<TextBox> result;
    const auto all = specs(slideTemplate);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::string_view given = all[i].fill == Fill::title ? title : text;
        result.push_back(makeBox(all[i], std::string(given), derivedID(slideID, i)));
    }
    return result;
}

MadeSlide slideTemplate::makeSlide(SlideTemplate slideTemplate, std::string_view title,
                                   std::string_view text) {
    MadeSlide slide;
    slide.id = Uuid::random();
    slide.layout = nearestLayout(slideTemplate);
    slide.boxes = boxes(slideTemplate, title, text);
    return slide;
}

} // namespace velarion
