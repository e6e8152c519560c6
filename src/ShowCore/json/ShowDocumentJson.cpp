#include "ShowCore/ShowDocumentJson.h"

#include "ShowCore/json/FieldsResources.h"
#include "ShowCore/json/JsonQuickRead.h"
#include "ShowCore/json/JsonWrite.h"

namespace velarion::showcore {

namespace {

template <class T> std::string encode(const T& value, std::size_t sizeHint) {
    std::string text(sizeHint, '\0');
    json::TextOutput output{text};
    json::TextWriter writer(output);
    json::EncodeContext context{writer};
    try {
        json::write(value, context);
    } catch (const json::EncodeFailure& failure) {
        throw failure.error();
    }
    text.resize(output.used);
    return text;
}

template <class T> T decode(std::string_view text) {
    // The quick reader takes the plain text our writer makes; anything else,
    // faults included, goes to the tree reader, which words every error.
    try {
        T value{};
        json::quickReadWhole(text, value);
        return value;
    } catch (const json::QuickReadAbandoned&) {
    }
    std::string buffer(text); // parsed in place; outlives the tree
    rapidjson::Document tree;
    json::parse(buffer, tree);
    json::DecodeContext context;
    T value{};
    json::read(tree, value, context);
    return value;
}

std::size_t countActions(const ShowDocument& document) {
    std::size_t count = 0;
    for (const auto& act : document.acts) {
        for (const auto& scene : act.scenes) {
            for (const auto& cue : scene.cues) count += 1 + cue.actions.size();
        }
    }
    return count;
}

} // namespace

std::string encodeShowDocument(const ShowDocument& document) {
    // About 600 bytes a cue or action; a close guess saves the string's regrowth.
    return encode(document, 4096 + 640 * countActions(document));
}

ShowDocument readShowDocument(std::string_view text) { return decode<ShowDocument>(text); }

ShowDocument decodeShowDocument(std::string_view text) {
    ShowDocument document = readShowDocument(text);
    document.validateForPersistence();
    return document;
}

std::string encodeShowCommand(const ShowCommand& command) { return encode(command, 256); }

ShowCommand decodeShowCommand(std::string_view text) { return decode<ShowCommand>(text); }

} // namespace velarion::showcore
