#include "AppDoubles.h"

namespace velarion::testing {

MediaItem FakeSlidePages::update(const MediaItem& item, const ShowPackage&,
                                 const SharedList<MediaItem>&) {
    if (failure) throw std::runtime_error(*failure);
    MediaItem updated = item;
    if (!updated.deck || !updated.deck->made) return updated;
    DeckInfo& deck = *updated.deck;
    deck.pages.clear();
    deck.notes.clear();
    for (std::size_t i = 0; i < deck.made->size(); ++i) {
        deck.pages.push_back("Slides/" + item.id.text() + "/" + std::to_string(i) + ".png");
        deck.notes.push_back((*deck.made)[i].notes);
    }
    return updated;
}

void FakeSlidePages::prunePages(const ShowPackage&, const SharedList<MediaItem>&) {
    ++pruneCount;
}

namespace {

class CountedActivity final : public AwakeActivity {
public:
    explicit CountedActivity(std::shared_ptr<int> count) : count_(std::move(count)) { ++*count_; }
    ~CountedActivity() override { --*count_; }

private:
    std::shared_ptr<int> count_;
};

} // namespace

std::unique_ptr<AwakeActivity> RecordingDesktopServices::beginAwakeActivity(const std::string& reason) {
    awakeReasons.push_back(reason);
    return std::make_unique<CountedActivity>(awake_);
}

} // namespace velarion::testing
