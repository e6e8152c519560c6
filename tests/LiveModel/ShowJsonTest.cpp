// The show document's JSON form. One hand-written document holds every
// record and every optional key; it must read and write back byte for byte,
// so a key spelt wrongly in both directions still fails. The rest are the
// reading rules: what is refused and with which words, null as absent, the
// legacy feed keys, and the version header read first.

#include "LiveModel/ShowJson.h"
#include "LiveModel/ShowTemplate.h"
#include "ShowGenerator.h"
#include "ShowPackageFixtures.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace velarion {
namespace {

const std::string& golden() {
    static const std::string text = testing::readText(std::filesystem::path(VELARION_TEST_DATA) / "show.json");
    return text;
}

// The golden document with the first `from` replaced by `to`.
std::string edited(std::string_view from, std::string_view to) {
    std::string text = golden();
    const auto at = text.find(from);
    if (at == std::string::npos) throw std::logic_error("no " + std::string(from) + " in show.json");
    return text.replace(at, from.size(), to);
}

// The golden document with the value of the first `key` replaced by `value`.
std::string withValue(std::string_view key, std::string_view value) {
    std::string text = golden();
    const std::string quoted = "\"" + std::string(key) + "\": ";
    const std::size_t begin = text.find(quoted) + quoted.size();
    std::size_t end = begin;
    for (int depth = 0; end < text.size(); ++end) {
        const char c = text[end];
        if (c == '{' || c == '[') ++depth;
        if (c == '}' || c == ']') --depth;
        if (depth < 0 || (depth == 0 && c == ',')) break;
        if (depth == 0 && (c == '}' || c == ']')) {
            ++end;
            break;
        }
    }
    return text.replace(begin, end - begin, value);
}

// The refusal's words; "decoded" when there is none, "other: …" for any other exception.
std::string decodeError(std::string_view text) {
    try {
        decodeShow(text);
    } catch (const ShowDecodeError& error) {
        return error.what();
    } catch (const std::exception& error) {
        return std::string("other: ") + error.what();
    }
    return "decoded";
}

TEST(ShowJson, TheGoldenDocumentReadsAndWritesBackByteForByte) {
    const Show show = decodeShow(golden());
    const std::string written = encodeShow(show);
    if (written != golden()) testing::writeText(std::filesystem::current_path() / "show.actual.json", written);
    ASSERT_EQ(written, golden()) << "the writer's text is in show.actual.json beside the test";
    // A few values, so that a field read into the wrong member fails too.
    ASSERT_EQ(show.allCues().size(), 19u);
    EXPECT_EQ(std::get<VideoCue>(show.allCues()[0]->kind).fadeOut, 1.0);
    EXPECT_EQ(std::get<VideoCue>(show.allCues()[0]->kind).inPoint, 1.5);
    EXPECT_EQ(show.allCues()[0]->geometry->rotation, 15.0);
    EXPECT_EQ(show.library[5].song->order.size(), 3u);
    EXPECT_EQ(show.outputs.feeds[0].frameRate, (VideoFrameRate{30000, 1001}));
    EXPECT_EQ(show.audio.houseLevel, 0.9);
}

TEST(ShowJson, ReadingNeverClampsAndReadsNullAsAbsent) {
    const Show show = decodeShow(edited(R"("level": 0.8)", R"("level": 1.5)"));
    EXPECT_EQ(std::get<VideoCue>(show.allCues()[0]->kind).level, 1.5);
    EXPECT_FALSE(decodeShow(withValue("groupDuration", "null")).allCues()[0]->groupDuration);
    EXPECT_FALSE(decodeShow(withValue("geometry", "null")).allCues()[0]->geometry);
}

TEST(ShowJson, RefusalsSayWhereAndWhy) {
    const std::string deep(100'000, '[');
    const struct {
        std::string text;
        std::string words; // the sentence, or a part of it
    } cases[] = {
        {edited(R"("isEnabled": false)", R"("isEnabledX": false)"), R"(sections[0].cues[1]: key "isEnabled" is missing)"},
        {edited(R"("level": 0.8,)", ""), R"(sections[0].cues[0].kind.video._0: key "level" is missing)"},
        {edited(R"("formatVersion": 1,)", ""), R"(key "formatVersion" is missing)"},
        {edited(R"("follow": "withPrevious")", R"("follow": "sideways")"),
         R"(sections[0].cues[0].follow: "sideways" isn't one of manual, withPrevious, afterPrevious)"},
        {edited(R"("0A1B2C3D-0000-4000-8000-000000000101")", R"("not-a-uuid")"),
         R"(sections[0].cues[0].id: "not-a-uuid" isn't a UUID)"},
        {edited(R"("level": 0.8)", R"("level": "loud")"),
         "sections[0].cues[0].kind.video._0.level: expected a number, found text"},
        {edited(R"("video": {)", R"("juggling": {)"), R"(sections[0].cues[0].kind: "juggling" isn't a known case)"},
        {edited(R"("display": {)", R"("placeholder": {}, "display": {)"),
         "outputs.screens[0].destination: Invalid number of keys found, expected one."},
        {edited(R"("height": 1080,)", ""), R"(outputs.feeds[0]: key "height" is missing)"},
        // Bytes and numbers no reader should take.
        {edited("Morning", "\xC3\x28"), "valid JSON"},
        {edited(R"("preWait": 0.25)", R"("preWait": 1e400)"), "valid JSON"},
        {edited(R"("formatVersion": 1)", R"("formatVersion": 4294967297)"), "formatVersion"},
        {edited(R"("subtitle": ")", R"("subtitle": )" + deep), "valid JSON"},
        {"[]", ""},
        {"", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.words);
        const std::string error = decodeError(c.text);
        EXPECT_TRUE(error != "decoded" && !error.starts_with("other:") && error.find(c.words) != std::string::npos)
            << error;
    }
}

TEST(ShowJson, ATruncatedDocumentIsRefused) {
    for (std::size_t length = 0; length < golden().size(); length += 97) {
        const std::string error = decodeError(std::string_view(golden()).substr(0, length));
        ASSERT_TRUE(error != "decoded" && !error.starts_with("other:")) << length << ": " << error;
    }
}

TEST(ShowJson, ADocumentOverTheSizeLimitIsRefusedUnread) {
    std::string text = golden();
    text.resize(maxShowDocumentBytes + 1, ' ');
    EXPECT_NE(decodeError(text).find("MB"), std::string::npos);
    text.pop_back();
    EXPECT_EQ(decodeError(text), "decoded");
}

TEST(ShowJson, FormatVersionCheckSeesTheHeaderBeforeTheBody) {
    std::string newer = edited(R"("formatVersion": 1)", R"("formatVersion": 2)");
    newer.replace(newer.find(R"("isEnabled": true)"), 17, R"("isEnabled": "yes")");
    int seen = 0;
    struct Refused {};
    EXPECT_THROW(decodeShow(newer, [&](int version) {
                     seen = version;
                     throw Refused{};
                 }),
                 Refused);
    EXPECT_EQ(seen, 2);
}

// ----------------------------------------------------------- outputs

TEST(OutputSetupJson, EveryKeyIsOptionalAndLineLimitsAreClamped) {
    EXPECT_EQ(decodeShow(withValue("outputs", "{}")).outputs, OutputSetup{});
    EXPECT_EQ(decodeShow(withValue("lyricLines", "99")).outputs.feeds[0].lyricLines, 8);
    EXPECT_EQ(decodeShow(withValue("lyricLines", "-4")).outputs.feeds[0].lyricLines, 1);
}

TEST(OutputSetupJson, LegacyFeedKeysDecideWhenTheNewOnesAreAbsent) {
    // Keys a reader doesn't know are passed over.
    std::string text = edited(R"("alphaMode")", R"("oldAlphaMode")");
    text.replace(text.find(R"("frameRate")"), 11, R"("oldFrameRate")");
    const NetworkFeed feed = decodeShow(text).outputs.feeds[0];
    EXPECT_EQ(feed.alphaMode, NDIAlphaMode::straight) << "isTransparent is true";
    EXPECT_EQ(feed.frameRate, (VideoFrameRate{30, 1}));
}

// Property tests of the JSON form over generated shows: decoding what was
// encoded gives the same show, and encoding is stable.
std::vector<bench::BenchmarkShowShape> shapes() {
    bench::BenchmarkShowShape medium;
    medium.seed = 40;
    medium.sectionCount = 12;
    medium.cueCount = 400;
    medium.libraryItemCount = 160;
    medium.songDeckCount = 6;
    medium.slidesPerSongDeck = 14;
    medium.screenCount = 7;
    medium.feedCount = 3;
    medium.cueGroupCount = 8;
    return {bench::smallShowShape(1), bench::smallShowShape(2), medium};
}

TEST(RoundTripShows, DecodingTheEncodedShowGivesItBackAndEncodingIsStable) {
    for (const auto& shape : shapes()) {
        SCOPED_TRACE("seed " + std::to_string(shape.seed));
        const Show show = bench::makeBenchmarkShow(shape);
        const std::string text = encodeShow(show);
        const Show decoded = decodeShow(text);
        EXPECT_TRUE(decoded == show);
        EXPECT_EQ(encodeShow(decoded), text);
    }
}

// Show templates: every one is a sound show that survives being written and
// read back, with new identities each time.
TEST(ShowTemplate, EveryTemplateMakesASoundShowThatSurvivesJson) {
    for (std::size_t i = 0; i < enumCount<ShowTemplate>(); ++i) {
        const auto showTemplate = static_cast<ShowTemplate>(i);
        SCOPED_TRACE(std::string(toString(showTemplate)));
        const Show show = showTemplate::make(showTemplate, "Launch");
        EXPECT_FALSE(show.sections.empty());

        std::set<Uuid> ids{show.id};
        std::size_t idCount = 1;
        auto count = [&](const Uuid& id) { ids.insert(id), ++idCount; };
        for (const Section& section : show.sections) {
            count(section.id);
            for (const Cue& cue : section.cues) {
                count(cue.id);
                if (const auto deckID = cueKind::mediaID(cue.kind)) {
                    const MediaItem* item = show.media(*deckID);
                    ASSERT_TRUE(item && item->deck && item->deck->made) << cue.name;
                    EXPECT_FALSE(item->deck->made->empty());
                }
            }
        }
        for (const MediaItem& item : show.library) {
            count(item.id);
            for (const MadeSlide& slide : *item.deck->made) {
                count(slide.id);
                // Editable means free boxes: the editor changes them without converting.
                EXPECT_TRUE(slide.boxes.has_value());
            }
        }
        EXPECT_EQ(ids.size(), idCount) << "every identity is new and distinct";
        EXPECT_EQ(decodeShow(encodeShow(show)), show);
    }
}

} // namespace
} // namespace velarion
