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

TaskHandle FakeSlidePages::draw(MediaItem item, ShowPackage package, SharedList<MediaItem> library, Done done) {
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    auto finish = [this, item = std::move(item), package = std::move(package), library = std::move(library),
                   done = std::move(done), cancelled] {
        if (cancelled->load()) return;
        DrawnPages result;
        try {
            result.item = update(item, package, library);
        } catch (const std::exception& error) {
            result.failure = error.what();
        }
        done(std::move(result));
    };
    if (holdsDraws)
        heldDraws.push_back(std::move(finish));
    else
        finish();
    return TaskHandle(cancelled);
}

void FakeSlidePages::finishDraws() {
    auto held = std::move(heldDraws);
    heldDraws.clear();
    for (auto& finish : held) finish();
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
