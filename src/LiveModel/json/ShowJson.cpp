#include "LiveModel/ShowJson.h"

#include "LiveModel/json/ShowFields.h"

namespace velarion {

std::string encodeShow(const Show& show) {
    rapidjson::Document document;
    json::EncodeContext context{document.GetAllocator(), {}};
    try {
        json::Value root = json::write(show, context);
        return json::toSortedPrettyText(root);
    } catch (const json::EncodeError& error) {
        throw ShowEncodeError(error.what());
    }
}

std::string encodeMadeSlide(const MadeSlide& slide) {
    rapidjson::Document document;
    json::EncodeContext context{document.GetAllocator(), {}};
    try {
        return json::toSortedPrettyText(json::write(slide, context));
    } catch (const json::EncodeError& error) {
        throw ShowEncodeError(error.what());
    }
}

Show decodeShow(std::string_view text, const FormatVersionCheck& checkVersion) {
    if (text.size() > maxShowDocumentBytes) {
        throw ShowDecodeError("the file is " + std::to_string(text.size() >> 20) +
                              " MB, more than the " + std::to_string(maxShowDocumentBytes >> 20) +
                              " MB a show document may hold");
    }
    rapidjson::Document document;
    try {
        json::parse(text, document);
        json::DecodeContext context;
        if (checkVersion && document.IsObject()) {
            // The header: only "formatVersion" matters; if it doesn't decode,
            // the whole decode below gives the better message.
            // Through a const view: comparing rapidjson's mutable member
            // iterators is ambiguous under C++20's rewritten operators.
            const json::Value& root = document;
            auto member = root.FindMember("formatVersion");
            if (member != root.MemberEnd()) {
                std::optional<int> formatVersion;
                try {
                    json::DecodeContext header;
                    int version = 0;
                    json::read(member->value, version, header);
                    formatVersion = version;
                } catch (const json::DecodeError&) {
                }
                if (formatVersion) checkVersion(*formatVersion);
            }
        }
        Show show;
        json::read(document, show, context);
        return show;
    } catch (const json::DecodeError& error) {
        throw ShowDecodeError(error.what());
    }
}

} // namespace velarion
