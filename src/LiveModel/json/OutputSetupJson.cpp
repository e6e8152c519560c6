// The output setup's JSON form. Older releases wrote fewer keys and described
// a feed by "isTransparent" and "framesPerSecond"; both forms stay readable,
// and the legacy pair is still written so that an older reader keeps working.

#include "LiveModel/json/ShowFields.h"

namespace velarion::json {

namespace {

template <class V, Is<OutputSetup> S> void visitSetupFields(V& v, S& s) {
    v("usesLogicalScreens", s.usesLogicalScreens);
    v("screens", s.screens);
    v("looks", s.looks);
    v("audienceDisplayIDs", s.audienceDisplayIDs);
    v("confidenceDisplayID", s.confidenceDisplayID);
    v("audienceWindowForTesting", s.audienceWindowForTesting);
    v("screenLayers", s.screenLayers);
    v("feeds", s.feeds);
    v("screenLyricLines", s.screenLyricLines);
    v("defaultVisualOutputIDs", s.defaultVisualOutputIDs);
}

void clampLyricLines(std::optional<int>& lines) {
    if (lines) lines = clampedLyricLines(*lines);
}

} // namespace

void read(const Value& value, OutputSetup& out, DecodeContext& context) {
    if (!value.IsObject()) context.fail("expected an object, found " + std::string(typeName(value)));
    out = OutputSetup{};
    FieldReader reader(value, context, /*lenient=*/true);
    visitSetupFields(reader, out);
    for (auto& screen : out.screens) clampLyricLines(screen.lyricLines);
    for (auto& look : out.looks) clampLyricLines(look.lyricLines);
}

Value write(const OutputSetup& setup, EncodeContext& context) {
    Value object(rapidjson::kObjectType);
    FieldWriter writer(object, context);
    visitSetupFields(writer, setup);
    return object;
}

void read(const Value& value, NetworkFeed& out, DecodeContext& context) {
    if (!value.IsObject()) context.fail("expected an object, found " + std::string(typeName(value)));
    FieldReader reader(value, context);
    out = NetworkFeed{};
    reader("id", out.id);
    reader("name", out.name);
    reader("layers", out.layers);
    reader("width", out.width);
    reader("height", out.height);
    reader("lyricLines", out.lyricLines);
    clampLyricLines(out.lyricLines);

    std::optional<NetworkFeedSource> source;
    reader("source", source);
    out.source = source.value_or(feedSource::Audience{});

    std::optional<NDIAlphaMode> alphaMode;
    reader("alphaMode", alphaMode);
    if (!alphaMode) {
        std::optional<bool> isTransparent;
        reader("isTransparent", isTransparent);
        alphaMode = isTransparent.value_or(false) ? NDIAlphaMode::straight : NDIAlphaMode::off;
    }
    out.alphaMode = *alphaMode;

    std::optional<VideoFrameRate> frameRate;
    reader("frameRate", frameRate);
    if (!frameRate) {
        std::optional<int> framesPerSecond;
        reader("framesPerSecond", framesPerSecond);
        frameRate = VideoFrameRate{framesPerSecond.value_or(30), 1};
    }
    out.frameRate = *frameRate;
    out.sendsSound.reset(); // lives in memory only
}

Value write(const NetworkFeed& feed, EncodeContext& context) {
    Value object(rapidjson::kObjectType);
    FieldWriter writer(object, context);
    writer("id", feed.id);
    writer("name", feed.name);
    writer("layers", feed.layers);
    writer("isTransparent", feed.alphaMode != NDIAlphaMode::off);
    writer("framesPerSecond", feed.framesPerSecond());
    writer("width", feed.width);
    writer("height", feed.height);
    writer("lyricLines", feed.lyricLines);
    writer("source", feed.source);
    writer("alphaMode", feed.alphaMode);
    writer("frameRate", feed.frameRate);
    return object;
}

} // namespace velarion::json
