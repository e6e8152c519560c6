// The show document's JSON rules: required keys, optional keys, variants,
// legacy feed keys and the few clamps applied while reading.

#include "LiveModel/ShowJson.h"

#include <gtest/gtest.h>

#include <string>

namespace velarion {
namespace {

const char* const showID = "6F1C2A3B-1111-4222-8333-944455566677";
const char* const cueID = "0A1B2C3D-0000-4000-8000-000000000001";
const char* const mediaID = "0A1B2C3D-0000-4000-8000-0000000000AA";

std::string cueJson(const std::string& kind, const std::string& extra = "") {
    return std::string(R"({"id":")") + cueID + R"(","name":"Walk-in","notes":"","kind":)" + kind +
           R"(,"follow":"manual","preWait":0,"isEnabled":true)" + extra + "}";
}

std::string showJson(const std::string& cues, const std::string& library = "",
                     const std::string& outputs = "{}") {
    return std::string(R"({"formatVersion":1,"id":")") + showID +
           R"(","title":"Sunday","subtitle":"","sections":[{"id":")" + showID +
           R"(","title":"Opening","cues":[)" + cues + R"(]}],"library":[)" + library +
           R"(],"outputs":)" + outputs +
           R"(,"audio":{"houseLevel":0.8},"holding":{"title":"Welcome","subtitle":""}})";
}

const std::string videoKind =
    std::string(R"({"video":{"_0":{"mediaID":")") + mediaID +
    R"(","layer":"media","inPoint":0,"loops":false,"holdLastFrame":false,"fadeIn":0,"fadeOut":0,"level":1.5}}})";

std::string decodeError(const std::string& text) {
    try {
        decodeShow(text);
    } catch (const ShowDecodeError& error) {
        return error.what();
    }
    return "decoded";
}

TEST(ShowJson, ReadsAMinimalShowAndKeepsOutOfRangeValues) {
    const Show show = decodeShow(showJson(cueJson(videoKind)));
    ASSERT_EQ(show.allCues().size(), 1u);
    const Cue& cue = *show.allCues()[0];
    EXPECT_EQ(cue.name, "Walk-in");
    EXPECT_FALSE(cue.geometry.has_value());
    // The reader never clamps: a hand-edited level of 1.5 stays 1.5.
    EXPECT_EQ(std::get<VideoCue>(cue.kind).level, 1.5);
    EXPECT_EQ(show.audio.houseLevel, 0.8);
    EXPECT_FALSE(show.audio.houseDeviceID.has_value());
    EXPECT_EQ(show.outputs, OutputSetup{});
}

TEST(ShowJson, MissingRequiredKeyFailsTheDocumentAndSaysWhere) {
    std::string cue = cueJson(videoKind);
    cue.replace(cue.find(R"(,"isEnabled":true)"), 17, "");
    EXPECT_EQ(decodeError(showJson(cue)), R"(sections[0].cues[0]: key "isEnabled" is missing)");

    std::string noLevel = showJson(cueJson(videoKind));
    noLevel.replace(noLevel.find(R"(,"level":1.5)"), 12, "");
    EXPECT_EQ(decodeError(noLevel), R"(sections[0].cues[0].kind.video._0: key "level" is missing)");

    std::string noVersion = showJson(cueJson(videoKind));
    noVersion.replace(noVersion.find(R"("formatVersion":1,)"), 18, "");
    EXPECT_EQ(decodeError(noVersion), R"(key "formatVersion" is missing)");
}

TEST(ShowJson, WrongTypesAndUnknownNamesAreRefused) {
    std::string badFollow = showJson(cueJson(videoKind));
    badFollow.replace(badFollow.find(R"("follow":"manual")"), 17, R"("follow":"sideways")");
    EXPECT_EQ(decodeError(badFollow),
              R"(sections[0].cues[0].follow: "sideways" isn't one of manual, withPrevious, afterPrevious)");

    std::string badID = showJson(cueJson(videoKind));
    badID.replace(badID.find(cueID), 36, "not-a-uuid");
    EXPECT_EQ(decodeError(badID), R"(sections[0].cues[0].id: "not-a-uuid" isn't a UUID)");

    std::string textLevel = showJson(cueJson(videoKind));
    textLevel.replace(textLevel.find(R"("level":1.5)"), 11, R"("level":"loud")");
    EXPECT_EQ(decodeError(textLevel),
              "sections[0].cues[0].kind.video._0.level: expected a number, found text");

    EXPECT_EQ(decodeError(showJson(cueJson(R"({"juggling":{"_0":{}}})"))),
              R"(sections[0].cues[0].kind: "juggling" isn't a known case)");
}

TEST(ShowJson, VariantObjectsNeedExactlyOneKey) {
    const std::string twoKeys = R"({"message":{"_0":{"text":"a","target":"stage"}},"clear":{"_0":{}}})";
    EXPECT_EQ(decodeError(showJson(cueJson(twoKeys))),
              "sections[0].cues[0].kind: Invalid number of keys found, expected one.");
    EXPECT_EQ(decodeError(showJson(cueJson("{}"))),
              "sections[0].cues[0].kind: Invalid number of keys found, expected one.");
}

TEST(ShowJson, OptionalKeysReadNullAsAbsentAndAreOmittedWhenEmpty) {
    const Show show =
        decodeShow(showJson(cueJson(videoKind, R"(,"geometry":null,"groupDuration":null)")));
    const Cue& cue = *show.allCues()[0];
    EXPECT_FALSE(cue.geometry.has_value());
    EXPECT_FALSE(cue.groupDuration.has_value());

    const std::string written = encodeShow(show);
    EXPECT_EQ(written.find("geometry"), std::string::npos);
    EXPECT_EQ(written.find("slideDissolve"), std::string::npos);
    EXPECT_EQ(written.find("null"), std::string::npos);
}

TEST(ShowJson, TimerModesAndBackdropsUseTheirOwnForms) {
    Show show;
    Cue countTo;
    countTo.kind = TimerCue{CountToMode{570}, "Doors", 60, true, true,
                            CountdownLook{CountdownLayout::fullScreen, backdrop::Color{0xFF0000},
                                          std::nullopt}};
    Cue countUp;
    countUp.kind = TimerCue{CountUpMode{}, std::nullopt, 0, true, false,
                            CountdownLook{CountdownLayout::corner,
                                          backdrop::BuiltIn{BuiltInBackdrop::ember}, std::nullopt}};
    Section section;
    section.cues = {countTo, countUp};
    show.sections.push_back(section);

    const std::string text = encodeShow(show);
    EXPECT_NE(text.find(R"("countTo": {)"), std::string::npos);
    EXPECT_NE(text.find(R"("minuteOfDay": 570)"), std::string::npos);
    EXPECT_NE(text.find(R"("countUp": {})"), std::string::npos);
    EXPECT_NE(text.find(R"("_0": 16711680)"), std::string::npos);
    EXPECT_NE(text.find(R"("_0": "ember")"), std::string::npos);
    EXPECT_NE(text.find(R"("timer": {)"), std::string::npos);
    EXPECT_EQ(decodeShow(text), show);
}

TEST(ShowJson, KeysAreSortedAndTheTextIsIndented) {
    const std::string text = encodeShow(decodeShow(showJson(cueJson(videoKind))));
    const auto position = [&](const char* key) { return text.find(key); };
    EXPECT_LT(position(R"("audio")"), position(R"("formatVersion")"));
    EXPECT_LT(position(R"("formatVersion")"), position(R"("holding")"));
    EXPECT_LT(position(R"("library")"), position(R"("sections")"));
    EXPECT_LT(position(R"("subtitle")"), position(R"("title")"));
    EXPECT_EQ(text.substr(0, 4), "{\n  ");
}

TEST(ShowJson, NonFiniteNumbersCannotBeWritten) {
    Show show;
    Section section;
    Cue cue;
    cue.kind = ClearCue{};
    cue.preWait = std::numeric_limits<double>::infinity();
    section.cues.push_back(cue);
    show.sections.push_back(section);
    try {
        encodeShow(show);
        FAIL() << "encoded an infinite pre-wait";
    } catch (const ShowEncodeError& error) {
        EXPECT_STREQ(error.what(), "sections[0].cues[0].preWait: the value isn't a finite number");
    }
}

TEST(ShowJson, FormatVersionCheckSeesTheHeaderBeforeTheBody) {
    std::string newer = showJson(cueJson(videoKind));
    newer.replace(newer.find(R"("formatVersion":1)"), 17, R"("formatVersion":2)");
    newer.replace(newer.find(R"("isEnabled":true)"), 16, R"("isEnabled":"yes")");
    int seen = 0;
    struct Refused {};
    EXPECT_THROW(decodeShow(newer, [&](int version) {
                     seen = version;
                     if (version >= 2) throw Refused{};
                 }),
                 Refused);
    EXPECT_EQ(seen, 2);
}

// ----------------------------------------------------------- outputs

TEST(OutputSetupJson, EveryKeyIsOptionalAndLineLimitsAreClamped) {
    const std::string outputs = R"({
        "usesLogicalScreens": true,
        "screens": [
          {"id":"HDMI-1","name":"Front","role":"audience","destination":{"display":{"_0":"HDMI-1"}},
           "layers":["media","slides"],"lyricLines":0},
          {"id":"rear","name":"Rear","role":"stage","destination":{"placeholder":{}},
           "layers":[],"lyricLines":99}],
        "looks": [{"id":"0A1B2C3D-0000-4000-8000-0000000000BB","name":"Clean","layers":[],"lyricLines":-4}]
    })";
    const Show show = decodeShow(showJson(cueJson(videoKind), "", outputs));
    ASSERT_EQ(show.outputs.screens.size(), 2u);
    EXPECT_EQ(show.outputs.screens[0].lyricLines, 1);
    EXPECT_EQ(show.outputs.screens[1].lyricLines, 8);
    EXPECT_EQ(show.outputs.looks[0].lyricLines, 1);
    EXPECT_EQ(show.outputs.screens[0].destination,
              ScreenDestination(destination::Display{"HDMI-1"}));
    EXPECT_TRUE(show.outputs.feeds.empty());
    EXPECT_FALSE(show.outputs.audienceWindowForTesting);
}

TEST(OutputSetupJson, LegacyFeedKeysAreReadAndStillWritten) {
    const std::string outputs = R"({"feeds":[{"id":"0A1B2C3D-0000-4000-8000-0000000000CC",
        "name":"Stream","layers":["slides"],"width":1280,"height":720,
        "isTransparent":true,"framesPerSecond":25,"lyricLines":12}]})";
    const Show show = decodeShow(showJson(cueJson(videoKind), "", outputs));
    ASSERT_EQ(show.outputs.feeds.size(), 1u);
    const NetworkFeed& feed = show.outputs.feeds[0];
    EXPECT_EQ(feed.alphaMode, NDIAlphaMode::straight);
    EXPECT_EQ(feed.frameRate, (VideoFrameRate{25, 1}));
    EXPECT_EQ(feed.source, NetworkFeedSource(feedSource::Audience{}));
    EXPECT_EQ(feed.lyricLines, 8);

    Show withRate = show;
    withRate.outputs.feeds[0].frameRate = {30000, 1001};
    withRate.outputs.feeds[0].alphaMode = NDIAlphaMode::off;
    withRate.outputs.feeds[0].sendsSound = true;
    const std::string text = encodeShow(withRate);
    EXPECT_NE(text.find(R"("framesPerSecond": 30)"), std::string::npos);
    EXPECT_NE(text.find(R"("isTransparent": false)"), std::string::npos);
    EXPECT_EQ(text.find("sendsSound"), std::string::npos);
    // The in-memory-only flag is gone after a reload; everything else stays.
    const Show reread = decodeShow(text);
    EXPECT_FALSE(reread.outputs.feeds[0].sendsSound.has_value());
    withRate.outputs.feeds[0].sendsSound.reset();
    EXPECT_EQ(reread, withRate);
}

TEST(OutputSetupJson, FeedWithoutRequiredKeyFails) {
    const std::string outputs =
        R"({"feeds":[{"id":"0A1B2C3D-0000-4000-8000-0000000000CC","name":"Stream","layers":[],"width":1280}]})";
    EXPECT_EQ(decodeError(showJson(cueJson(videoKind), "", outputs)),
              R"(outputs.feeds[0]: key "height" is missing)");
}

TEST(OutputSetupJson, AKeyPresentWithNullReadsAsAbsent) {
    for (const char* key : {"usesLogicalScreens", "screens", "looks", "audienceDisplayIDs",
                            "confidenceDisplayID", "audienceWindowForTesting", "screenLayers",
                            "feeds", "screenLyricLines", "defaultVisualOutputIDs"}) {
        const std::string outputs = std::string(R"({")") + key + R"(":null})";
        EXPECT_EQ(decodeShow(showJson(cueJson(videoKind), "", outputs)).outputs, OutputSetup{})
            << key;
    }
}

} // namespace
} // namespace velarion
