#include "LiveModel/ShowEditError.h"

namespace velarion {

namespace {

struct Describe {
    std::string operator()(const editError::MediaInUse& error) const {
        std::string text =
            error.cueNames.size() == 1 ? "Still used by cue " : "Still used by cues ";
        for (std::size_t i = 0; i < error.cueNames.size(); ++i) {
            if (i > 0) text += ", ";
            text += error.cueNames[i];
        }
        return text + ".";
    }
    std::string operator()(const editError::InvalidCueGroup& error) const { return error.message; }
    std::string operator()(editError::CueNotFound) const { return "That cue no longer exists."; }
    std::string operator()(editError::SectionNotFound) const {
        return "That section no longer exists.";
    }
    std::string operator()(editError::MediaNotFound) const {
        return "That media is missing from the show.";
    }
    std::string operator()(editError::EmptyName) const { return "Names can't be empty."; }
    std::string operator()(editError::Locked) const {
        return "Show Mode is on. Return to Edit to make changes.";
    }
    std::string operator()(editError::CueGroupNotFound) const {
        return "That cue group no longer exists.";
    }
};

} // namespace

std::string errorDescription(const ShowEditErrorCase& reason) {
    return std::visit(Describe{}, reason);
}

ShowEditError::ShowEditError(ShowEditErrorCase reason)
    : reason_(std::move(reason)), description_(velarion::errorDescription(reason_)) {}

} // namespace velarion
