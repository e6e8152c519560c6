// Show documents written to hurt: each must be refused with ShowDecodeError and
// a sentence for the operator, never a crash, a hang or another exception.

#include "LiveModel/ShowJson.h"
#include "SeededRandom.h"
#include "ShowGenerator.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>

namespace velarion {
namespace {

// Decodes `text` expecting a refusal; returns the sentence (empty on failure).
std::string refusal(std::string_view text) {
    try {
        decodeShow(text);
        ADD_FAILURE() << "decoded without complaint";
    } catch (const ShowDecodeError& error) {
        const std::string sentence = error.what();
        EXPECT_FALSE(sentence.empty());
        return sentence;
    } catch (const std::exception& error) {
        ADD_FAILURE() << "threw something other than ShowDecodeError: " << error.what();
    }
    return {};
}

const std::string& smallShowText() {
    static const std::string text = encodeShow(bench::makeBenchmarkShow(bench::smallShowShape()));
    return text;
}

// A show of a few kilobytes with nested records, optional keys and every kind
// of value, so that its every prefix can be tried quickly.
std::string tinyShowText() {
    bench::SeededRandom random(7);
    MediaItem deck;
    deck.id = random.uuid();
    deck.kind = MediaKind::deck;
    deck.name = "Bienvenue à l'église";
    deck.fileName = "made";
    MadeSlide slide;
    slide.id = random.uuid();
    slide.title = "Welcome";
    slide.boxes = std::vector<TextBox>{{random.uuid(), "Good\nmorning", 0.1, 0.2, 0.8, 0.3}};
    deck.deck = DeckInfo{{},
                         {""},
                         {{"Intro", 0}},
                         "Velarion",
                         std::vector<MadeSlide>{slide},
                         {},
                         backdrop::Color{0x203040}};

    Section section;
    section.id = random.uuid();
    section.title = "Opening";
    section.plannedStart = 600;
    Cue slides;
    slides.id = random.uuid();
    slides.name = "Welcome slides";
    slides.kind = SlidesCue{deck.id, 0, 0.5};
    Cue timer;
    timer.id = random.uuid();
    timer.name = "Countdown";
    timer.follow = Follow::afterPrevious;
    timer.kind = TimerCue{CountdownMode{300},
                          "Starts in",
                          30,
                          true,
                          false,
                          CountdownLook{CountdownLayout::fullScreen, backdrop::None{}, {}}};
    section.cues = {slides, timer};

    Show show;
    show.id = random.uuid();
    show.title = "Evensong";
    show.sections.emplace_back(section);
    show.library.emplace_back(deck);
    show.outputs.usesLogicalScreens = true;
    show.outputs.screens.push_back({"main",
                                    "Main",
                                    ScreenRole::audience,
                                    destination::Display{"DP-1"},
                                    {LayerKind::slides},
                                    2,
                                    {}});
    show.cueGroups = std::vector<CueGroup>{{random.uuid(), "Start", {slides.id, timer.id}, false}};
    return encodeShow(show);
}

// The small show with the first occurrence of `from` replaced by `to`.
std::string withReplaced(std::string_view from, std::string_view to) {
    std::string text = smallShowText();
    const auto at = text.find(from);
    if (at == std::string::npos)
        throw std::logic_error("no " + std::string(from) + " in the show");
    text.replace(at, from.size(), to);
    return text;
}

TEST(HostileShowJson, SanityTheEditedShowStillDecodesWithHarmlessReplacements) {
    // Guards the cases below: they fail for the bytes they put in, not for
    // the way they were put in.
    EXPECT_NO_THROW(decodeShow(withReplaced("\"preWait\": 0.0", "\"preWait\": 1e3")));
    EXPECT_NO_THROW(decodeShow(withReplaced("\"subtitle\": \"", "\"subtitle\": \"\\u00e9")));
}

TEST(HostileShowJson, BrokenUtf8InsideTextIsRefused) {
    for (std::string_view bytes : {std::string_view("\xC3\x28", 2), std::string_view("\xFF", 1),
                                   std::string_view("\xE2\x82", 2),     // cut short
                                   std::string_view("\xED\xA0\x80", 3), // a lone surrogate
                                   std::string_view("\xC0\xAF", 2)}) {  // overlong '/'
        const std::string text =
            withReplaced("\"subtitle\": \"", "\"subtitle\": \"" + std::string(bytes));
        EXPECT_NE(refusal(text).find("valid JSON"), std::string::npos);
    }
}

TEST(HostileShowJson, DeepNestingIsRefusedWithoutExhaustingTheStack) {
    constexpr std::size_t depth = 100'000;
    const std::string open(depth, '['), close(depth, ']');
    // Well-formed but deep, where the show wants text, and as the whole document.
    refusal(withReplaced("\"subtitle\": \"", "\"subtitle\": " + open + close + ", \"x\": \""));
    refusal(open + close);
    // Never closed.
    refusal(open);
    std::string objects;
    for (std::size_t i = 0; i < depth; ++i)
        objects += "{\"a\": ";
    refusal("{\"title\": " + objects);
}

TEST(HostileShowJson, NumbersJsonCannotHoldAreRefused) {
    const std::string numbers[] = {"1e400",    "-1e400",    "1.8e308", "9.99e308", "-2e308",
                                   "1" + std::string(309, '0'), // a whole number past a double
                                   "NaN",      "Infinity",  "-Infinity", "nan",     "inf",
                                   "0x10",     "+1",        ".5",      "1.",       "01"};
    for (const std::string& number : numbers) {
        SCOPED_TRACE(number);
        refusal(withReplaced("\"preWait\": 0.0", "\"preWait\": " + number));
    }
    // Huge but finite whole numbers don't fit an int field.
    SCOPED_TRACE("formatVersion");
    refusal(withReplaced("\"formatVersion\": 1", "\"formatVersion\": 1e300"));
    refusal(withReplaced("\"formatVersion\": 1", "\"formatVersion\": 4294967297"));
}

TEST(HostileShowJson, NumbersAtTheEdgesOfADoubleReadAsTheirNearestValue) {
    const auto preWait = [](std::string_view number) {
        const std::string text =
            withReplaced("\"preWait\": 0.0", "\"preWait\": " + std::string(number));
        return decodeShow(text).sections.front().cues.front().preWait;
    };
    // Zero with any exponent is zero; too small for a double rounds to zero.
    for (std::string_view zero :
         {"0e308", "-0e308", "0.0e300", "0.000e-300", "1e-400", "-1e-400"}) {
        SCOPED_TRACE(zero);
        EXPECT_EQ(preWait(zero), 0.0);
    }
    EXPECT_EQ(preWait("1.7976931348623157e308"), std::numeric_limits<double>::max());
    EXPECT_EQ(preWait("4.9406564584124654e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(preWait("0.1"), 0.1);
    EXPECT_EQ(preWait("123456789012345678901234567890"), 123456789012345678901234567890.0);
}

TEST(HostileShowJson, DocumentOverTheSizeLimitIsRefusedUnread) {
    // Padding after a valid show: the size alone must refuse it.
    std::string text = smallShowText();
    text.resize(maxShowDocumentBytes + 1, ' ');
    EXPECT_NE(refusal(text).find("MB"), std::string::npos);
    // At the limit exactly, the same text still decodes.
    text.pop_back();
    EXPECT_NO_THROW(decodeShow(text));
}

TEST(HostileShowJson, TopLevelValueOtherThanAnObjectIsRefused) {
    for (std::string_view text : {"[]", "[{}]", "42", "\"show\"", "null", "true", "", " ", "{}"}) {
        SCOPED_TRACE(text);
        refusal(text);
    }
}

TEST(HostileShowJson, EveryTruncationOfAValidShowIsRefused) {
    const std::string text = tinyShowText();
    ASSERT_NO_THROW(decodeShow(text));
    for (std::size_t length = 0; length < text.size(); ++length) {
        try {
            decodeShow(std::string_view(text).substr(0, length));
            ADD_FAILURE() << "a prefix of " << length << " bytes decoded";
        } catch (const ShowDecodeError& error) {
            ASSERT_NE(std::string_view(error.what()), "") << length;
        }
    }
}

} // namespace
} // namespace velarion
