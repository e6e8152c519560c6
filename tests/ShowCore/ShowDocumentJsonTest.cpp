// The JSON form of the show graph: round trips, the shape of each kind of
// value, and refusals that name the path to the fault.

#include "ShowGraphGenerator.h"

#include "ShowCore/ShowDocumentJson.h"

#include <gtest/gtest.h>

#include <regex>

namespace velarion::showcore {
namespace {

const std::string& smallText() {
    static const std::string text = encodeShowDocument(bench::makeShowGraph({1, 1, 1, 13}));
    return text;
}

TEST(ShowDocumentJsonTest, LargeGeneratedGraphRoundTrips) {
    const ShowDocument graph = bench::makeShowGraph({6, 5, 8, 13, 99});
    const std::string text = encodeShowDocument(graph);
    const ShowDocument decoded = decodeShowDocument(text);
    EXPECT_TRUE(decoded == graph);
    EXPECT_EQ(encodeShowDocument(decoded), text);
}

TEST(ShowDocumentJsonTest, ValuesHaveTheirStatedForms) {
    const std::string& text = smallText();
    const std::vector<std::pair<const char*, std::string>> forms = {
        {"case without payload", R"("progression":{"manual":{}})"},
        {"labelled payload", R"("progression":{"startWithNext":{"delay":{"seconds":)"},
        {"unlabelled identity", R"("target":{"audioBus":{"_0":")"},
        {"unlabelled record", R"("payload":{"localAudio":{"_0":{"assetID":")"},
        {"plain enumeration", R"("timebase":"monotonic")"},
        {"sort rank", R"("order":{"value":"i"})"},
        {"date", R"("createdAt":"2026-11-18T)"},
        {"URL", R"("sourceURL":"file:///home/ana/Music/intro.wav")"},
        {"modifier set", R"("modifiers":["shift"])"},
        {"unsigned 16-bit", R"("port":53000)"},
    };
    for (const auto& [what, form] : forms) EXPECT_NE(text.find(form), std::string::npos) << what << ": " << form;
    // Optional keys are left out when empty: only one reference has an album.
    EXPECT_EQ(text.find("\"album\""), text.rfind("\"album\""));
}

struct Refusal {
    const char* pattern; // replaced at its first match
    const char* replacement;
    const char* path;
    const char* reason; // a part of the reason
};

TEST(ShowDocumentJsonTest, RefusesWithThePathToTheFault) {
    const std::vector<Refusal> refusals = {
        {R"("title":"Act 1",)", "", "acts[0].title", "required key is missing"},
        {R"(\{"manual":\{\}\})", R"({"manual":{},"cut":{}})", "", "Invalid number of keys found, expected one."},
        {R"("timebase":"monotonic")", R"("timebase":"sundial")", "", "\"sundial\" isn't one of monotonic, wallClock"},
        {R"("preWait":\{"seconds":[0-9.]+\})", R"("preWait":{"seconds":-1})", "acts[0].scenes[0].cues[0].timing.preWait.seconds",
         "Duration must be finite and nonnegative"},
        {R"("createdAt":"[^"]*")", R"("createdAt":"2026-13-01T00:00:00Z")", "createdAt", "isn't a date"},
        {R"("sourceURL":"[^"]*")", R"("sourceURL":"intro.wav")", "", "isn't an absolute URL"},
        {R"("showID":"[^"]*")", R"("showID":"not-a-uuid")", "acts[0].showID", "isn't a UUID"},
        {R"("channel":10)", R"("channel":300)", "controlProfiles[0].bindings[2].source.midi._0.channel", "outside 0 to 255"},
        {R"(\]\}$)", "]", "", "isn't valid JSON"},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.pattern);
        const std::string broken =
            std::regex_replace(smallText(), std::regex(refusal.pattern), refusal.replacement,
                               std::regex_constants::format_first_only);
        ASSERT_NE(broken, smallText());
        try {
            readShowDocument(broken);
            ADD_FAILURE() << "accepted";
        } catch (const ShowJsonError& error) {
            if (*refusal.path) {
                EXPECT_EQ(error.path, refusal.path);
            }
            EXPECT_NE(error.reason.find(refusal.reason), std::string::npos) << error.what();
        }
    }
}

TEST(ShowDocumentJsonTest, IgnoresUnknownKeysAndReadsNullAsNone) {
    std::string text = std::regex_replace(smallText(), std::regex(R"("notes":)"), R"("addedLater":{"x":[1]},"notes":)");
    text = std::regex_replace(text, std::regex(R"("storefront":"us")"), R"("storefront":null)",
                              std::regex_constants::format_first_only);
    ShowDocument expected = readShowDocument(smallText());
    expected.providerReferences[0].storefront.reset();
    EXPECT_TRUE(readShowDocument(text) == expected);
}

TEST(ShowDocumentJsonTest, DecodingValidatesTheGraph) {
    ShowDocument graph = bench::makeShowGraph({1, 1, 2, 2});
    graph.acts[0].scenes[0].cues[1].actions[0].id = graph.acts[0].scenes[0].cues[0].actions[0].id;
    const std::string text = encodeShowDocument(graph);
    EXPECT_TRUE(readShowDocument(text) == graph);
    EXPECT_THROW(decodeShowDocument(text), ShowValidationError);
}

} // namespace
} // namespace velarion::showcore
