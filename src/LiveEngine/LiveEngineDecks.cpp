// Live decks: the one active deck, stepping slides and lyric parts, the
// deck's background, and per-screen cuts of a lyric slide.

#include "LiveEngine/LiveEngine.h"

#include "LiveModel/Song.h"

#include <algorithm>
#include <cmath>

namespace velarion {

namespace {

// Lyric renderings kept at most; the cache is emptied when it would grow past.
constexpr std::size_t lyricPictureLimit = 65;

// A video's standby picture: its frame here, no bigger than this.
constexpr double standbyFrameSeconds = 0.1;
constexpr int standbyWidth = 960;
constexpr int standbyHeight = 540;

// The picture shrunk to fit within the box, each pixel the mean of the
// source pixels it covers; one that fits already is kept as it is.
std::optional<StillImage> fitWithin(const StillPixels& source, int maxWidth, int maxHeight) {
    if (source.width <= 0 || source.height <= 0) return std::nullopt;
    const double scale = std::min({1.0, static_cast<double>(maxWidth) / source.width,
                                   static_cast<double>(maxHeight) / source.height});
    const int width = std::max(1, static_cast<int>(std::lround(source.width * scale)));
    const int height = std::max(1, static_cast<int>(std::lround(source.height * scale)));
    if (width == source.width && height == source.height)
        return StillImage::fromBGRA(width, height, source.bgra);
    std::vector<std::uint8_t> bgra(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    for (int y = 0; y < height; ++y) {
        const int top = y * source.height / height;
        const int bottom = std::max(top + 1, (y + 1) * source.height / height);
        for (int x = 0; x < width; ++x) {
            const int left = x * source.width / width;
            const int right = std::max(left + 1, (x + 1) * source.width / width);
            std::uint32_t sum[4] = {0, 0, 0, 0};
            for (int sy = top; sy < bottom; ++sy)
                for (int sx = left; sx < right; ++sx)
                    for (int c = 0; c < 4; ++c)
                        sum[c] += source.bgra[(static_cast<std::size_t>(sy) * source.width + sx) * 4 + c];
            const auto count = static_cast<std::uint32_t>((bottom - top) * (right - left));
            for (int c = 0; c < 4; ++c)
                bgra[(static_cast<std::size_t>(y) * width + x) * 4 + c] =
                    static_cast<std::uint8_t>((sum[c] + count / 2) / count);
        }
    }
    return StillImage::fromBGRA(width, height, std::move(bgra));
}

SceneColor colorOf(int rgb) {
    return SceneColor{((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0,
                      1};
}

bool isNone(const std::optional<Backdrop>& backdrop) {
    return !backdrop || std::holds_alternative<backdrop::None>(*backdrop);
}

bool sameBackdrop(const std::optional<Backdrop>& a, const std::optional<Backdrop>& b) {
    return isNone(a) ? isNone(b) : (!isNone(b) && *a == *b);
}

} // namespace

const DeckInfo* LiveEngine::deck(const Run& run) const {
    const auto* slides = std::get_if<SlidesCue>(&run.cue.kind);
    if (slides == nullptr) return nullptr;
    const MediaItem* item = index_.media(slides->deckID);
    return item && item->deck ? &*item->deck : nullptr;
}

double LiveEngine::slideDissolve(const Run& run) const {
    const auto* slides = std::get_if<SlidesCue>(&run.cue.kind);
    const double chosen = slides && slides->dissolve ? *slides->dissolve : show_.effectiveSlideDissolve();
    return std::isfinite(chosen) ? std::clamp(chosen, 0.0, 10.0) : 0.0;
}

Run* LiveEngine::activeRunOf(const Uuid& cueID) {
    for (const Uuid& id : runOrder_)
        if (Run* run = findRun(id); run && run->cue.id == cueID) return run;
    return nullptr;
}

void LiveEngine::beginSlides(Run& run) {
    const DeckInfo* info = deck(run);
    if (info == nullptr) return fail(run.id, "the deck is missing");
    if (info->pages.empty()) return fail(run.id, "the opening slide is missing");
    const Uuid runID = run.id;
    run.slideCount = static_cast<int>(info->pages.size());
    activeDeckRunID_ = runID;
    replacePictures(run, slideDissolve(run), std::nullopt);
    if (!findRun(runID)) return;
    applyDeckBackground(runID);
    Run* current = findRun(runID);
    if (current == nullptr) return;
    if (current->isBackgroundOnly) return;
    const int opening = current->slideIndex.value_or(std::get<SlidesCue>(current->cue.kind).startSlide);
    current->slideIndex.reset(); // so that the opening slide counts as a change
    showSlide(opening, runID);
}

void LiveEngine::showSlide(int index, const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr) return;
    const DeckInfo* info = deck(*run);
    if (info == nullptr || info->pages.empty()) return;
    const int last = static_cast<int>(info->pages.size()) - 1;
    const int i = std::clamp(index, 0, last);
    // The same slide again is no change, and must not dissolve.
    if (!run->isBackgroundOnly && run->slideIndex == i && run->slidePart == 0 &&
        stack_.runID(LayerKind::slides) == runID)
        return;
    run->slideIndex = i;
    run->slidePart = 0;
    run->isBackgroundOnly = false;

    const std::optional<StillImage> page =
        cachedPicture(package_.mediaURL(info->pages[static_cast<std::size_t>(i)]).string());
    if (!page) return; // the old picture stays up
    takeLayer(LayerKind::slides, *run, std::nullopt);
    run = findRun(runID);
    if (run == nullptr) return;
    // A fresh identity per shown slide, so the renderer dissolves it.
    stack_.show(SceneStillContent{page->freshCopy()}, LayerKind::slides, runID,
                slideDissolve(*run), SceneScaling::fit, geometry(*run));
}

void LiveEngine::moveSlide(int delta) {
    if (!activeDeckRunID_) return;
    Run* run = findRun(*activeDeckRunID_);
    if (run == nullptr) return;
    const Uuid runID = run->id;
    if (run->isBackgroundOnly) {
        if (delta >= 1) showSlide(0, runID);
        return;
    }
    const int index = run->slideIndex.value_or(0);
    if (delta < 0) {
        const DeckInfo* info = deck(*run);
        if (index == 0 && run->slidePart == 0 && info && !isNone(info->background)) {
            // Stepping back from the first slide goes to the bare background.
            showDeckBackground(run->cue.id);
        } else if (run->slidePart >= 1) {
            run->slidePart -= 1;
        } else {
            showSlide(index + delta, runID);
        }
        return;
    }
    if (delta > 0) {
        if (run->slidePart < lyricPartCount(*run) - 1) run->slidePart += 1;
        else showSlide(index + delta, runID);
        return;
    }
    showSlide(index, runID);
}

void LiveEngine::goToSlide(int index) {
    if (activeDeckRunID_) showSlide(index, *activeDeckRunID_);
}

void LiveEngine::showDeckSlide(const Uuid& cueID, int index) {
    const Cue* cue = index_.cue(cueID);
    if (cue == nullptr || !std::holds_alternative<SlidesCue>(cue->kind)) return;
    const MediaItem* item = index_.media(std::get<SlidesCue>(cue->kind).deckID);
    if (item == nullptr || !item->deck) return;
    if (Run* run = activeRunOf(cueID)) {
        activeDeckRunID_ = run->id;
        showSlide(index, run->id);
        return;
    }
    if (!cue->isEnabled) return;
    discardHeldFollowers("Started deck from a slide thumbnail");
    fire(*cue, index, false);
}

void LiveEngine::showDeckBackground(const Uuid& cueID) {
    if (Run* run = activeRunOf(cueID)) {
        const Uuid runID = run->id;
        run->isBackgroundOnly = true;
        const DeckInfo* info = deck(*run);
        const std::optional<Backdrop> wanted = info ? info->background : std::nullopt;
        if ((!isNone(wanted) && stack_.entry(runID, LayerKind::background) == nullptr) ||
            !sameBackdrop(run->shownBackdrop, wanted))
            applyDeckBackground(runID);
        run = findRun(runID);
        if (run == nullptr) return;
        if (const auto* entry = stack_.entry(runID, LayerKind::slides))
            stack_.clearLayer(entry->layerID, slideDissolve(*run));
        return;
    }
    const Cue* cue = index_.cue(cueID);
    if (cue == nullptr || !cue->isEnabled) return;
    discardHeldFollowers("Started deck from its background tile");
    fire(*cue, 0, true);
}

void LiveEngine::applyDeckBackground(const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr) return;
    if (auto backdrop = backdropSurfaces_.find(runID); backdrop != backdropSurfaces_.end())
        backdrop->second->pause();
    const DeckInfo* info = deck(*run);
    const std::optional<Backdrop> background = info ? info->background : std::nullopt;
    run->shownBackdrop = isNone(background) ? std::nullopt : background;
    takeLayer(LayerKind::background, *run, std::nullopt);
    if (isNone(background)) {
        if (const auto* entry = stack_.entry(runID, LayerKind::background))
            stack_.clearLayer(entry->layerID, 0.3);
        return;
    }
    if (findRun(runID)) showBackdrop(*background, runID);
}

void LiveEngine::showBackdrop(const Backdrop& backdrop, const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr) return;
    const Uuid token = Uuid::random();
    run->backdropToken = token;
    if (const auto* color = std::get_if<backdrop::Color>(&backdrop)) {
        stack_.show(SceneColorContent{colorOf(color->rgb)}, LayerKind::background, runID, 0.6,
                    SceneScaling::fit, std::nullopt);
    } else if (const auto* media = std::get_if<backdrop::Media>(&backdrop)) {
        const MediaItem* item = index_.media(media->mediaID);
        if (item == nullptr) return;
        if (item->kind == MediaKind::video) return loopBackdrop(mediaPath(*item), runID, token);
        if (std::optional<StillImage> picture = loadImage(item->id))
            stack_.show(SceneStillContent{std::move(*picture)}, LayerKind::background, runID, 0.6,
                        SceneScaling::fill, std::nullopt);
    } else if (const auto* builtIn = std::get_if<backdrop::BuiltIn>(&backdrop)) {
        if (backdropReadyURL)
            if (auto ready = backdropReadyURL(builtIn->loop)) return loopBackdrop(*ready, runID, token);
        if (!prepareBackdropLoop) return;
        std::weak_ptr<int> life = life_;
        prepareBackdropLoop(builtIn->loop, [this, life, runID, token](std::optional<std::filesystem::path> file) {
            if (life.expired() || isShutDown_ || !file) return;
            const Run* waiting = findRun(runID);
            // A backdrop replaced while it rendered must not appear.
            if (waiting == nullptr || waiting->backdropToken != token) return;
            loopBackdrop(*file, runID, token);
            publish();
        });
    }
}

void LiveEngine::loopBackdrop(const std::filesystem::path& file, const Uuid& runID, const Uuid& token) {
    std::shared_ptr<VideoSurface> surface = ports_.players.makeVideoSurface(Uuid::random(), file);
    surface->setLoops(true);
    surface->setVolume(0, true);
    if (auto old = backdropSurfaces_.find(runID); old != backdropSurfaces_.end()) old->second->pause();
    backdropSurfaces_[runID] = surface;
    surfaceOwners_[surface->id()] = surface;
    stack_.show(SceneVideoContent{surface->id()}, LayerKind::background, runID, 0.6,
                SceneScaling::fill, std::nullopt);
    std::weak_ptr<int> life = life_;
    surface->prepare(videoPrepareTimeoutSeconds, [this, life, runID, token, surface](VideoPreparation result) {
        if (life.expired() || isShutDown_) return;
        const Run* run = findRun(runID);
        if (run == nullptr || run->backdropToken != token) return;
        if (std::holds_alternative<VideoSurfaceInfo>(result)) surface->play();
        else warn(run->cue.name + "'s background loop didn't play — " +
                  std::get<VideoSurfaceError>(result).text());
        publish();
    });
}

std::optional<LiveEngine::LiveLyric> LiveEngine::liveLyric(const Run& run) const {
    const auto* slides = std::get_if<SlidesCue>(&run.cue.kind);
    if (slides == nullptr || !run.slideIndex) return std::nullopt;
    const MediaItem* item = index_.media(slides->deckID);
    if (item == nullptr || !item->deck || !item->song || !item->deck->lyricSources || !item->deck->made)
        return std::nullopt;
    const auto index = static_cast<std::size_t>(*run.slideIndex);
    if (index >= item->deck->lyricSources->size() || index >= item->deck->made->size())
        return std::nullopt;
    LiveLyric lyric;
    lyric.song = &*item->song;
    lyric.slide = &(*item->deck->made)[index];
    lyric.lines = item->song->lyricLines(*lyric.slide);
    lyric.deckID = item->id;
    lyric.background = item->deck->background;
    return lyric;
}

int LiveEngine::lyricPartCount(const Run& run) const {
    const auto lyric = liveLyric(run);
    if (!lyric) return 1;
    std::size_t count = 1;
    for (const auto& [screen, limit] : show_.outputs.lyricLineLimits())
        count = std::max(count, Song::parts(lyric->lines, limit).size());
    return static_cast<int>(count);
}

LyricPartPictures LiveEngine::lyricPartPictures() {
    LyricPartPictures pictures;
    if (!activeDeckRunID_ || stack_.runID(LayerKind::slides) != activeDeckRunID_) return pictures;
    const Run* run = findRun(*activeDeckRunID_);
    if (run == nullptr) return pictures;
    const auto lyric = liveLyric(*run);
    if (!lyric) return pictures;
    const std::size_t count = static_cast<std::size_t>(lyricPartCount(*run));
    std::set<int> limits;
    for (const auto& [screen, limit] : show_.outputs.lyricLineLimits()) limits.insert(limit);
    for (int limit : limits) {
        // A screen that can hold the whole slide shows the full page.
        if (static_cast<std::size_t>(limit) >= lyric->lines.size()) continue;
        const auto parts = Song::parts(lyric->lines, limit);
        if (parts.empty()) continue;
        const std::size_t partIndex =
            std::min(static_cast<std::size_t>(run->slidePart) * parts.size() / count, parts.size() - 1);
        std::string text;
        for (const std::string& line : parts[partIndex]) text += (text.empty() ? "" : "\n") + line;
        const MadeSlide part = lyric->slide->showingLyricPart(text);
        const std::string name = ports_.slides.pageName(lyric->deckID, part);
        auto cached = lyricPictures_.find(name);
        if (cached == lyricPictures_.end()) {
            std::optional<StillImage> drawn = ports_.slides.render(part, lyric->background);
            if (!drawn) continue;
            if (lyricPictures_.size() >= lyricPictureLimit) lyricPictures_.clear();
            cached = lyricPictures_.emplace(name, std::move(*drawn)).first;
        }
        pictures.emplace(limit, cached->second);
    }
    return pictures;
}

void LiveEngine::standbyImage(const Uuid& cueID,
                              std::function<void(std::optional<StillImage>)> done) {
    std::optional<StillImage> picture;
    if (const Cue* cue = index_.cue(cueID)) {
        if (const auto* slides = std::get_if<SlidesCue>(&cue->kind)) {
            const MediaItem* item = index_.media(slides->deckID);
            if (item && item->deck && !item->deck->pages.empty()) {
                const auto page = std::min(static_cast<std::size_t>(std::max(slides->startSlide, 0)),
                                           item->deck->pages.size() - 1);
                picture = ports_.images.load(package_.mediaURL(item->deck->pages[page]).string());
            }
        } else if (const auto* image = std::get_if<ImageCue>(&cue->kind)) {
            picture = loadImage(image->mediaID);
        } else if (const auto* video = std::get_if<VideoCue>(&cue->kind)) {
            return standbyVideoFrame(*video, std::move(done));
        } else if (const auto* message = std::get_if<MessageCue>(&cue->kind)) {
            picture = ports_.cards.banner(message->text);
        } else if (const auto* graphic = std::get_if<GraphicCue>(&cue->kind)) {
            picture = ports_.cards.lowerThird(graphic->title, graphic->subtitle);
        }
    }
    post([done = std::move(done), picture = std::move(picture)] { done(picture); });
}

void LiveEngine::standbyVideoFrame(const VideoCue& video, std::function<void(std::optional<StillImage>)> done) {
    const MediaItem* item = index_.media(video.mediaID);
    if (item == nullptr || item->ndiSource || !ports_.players.fileExists(mediaPath(*item))) {
        post([done = std::move(done)] { done(std::nullopt); });
        return;
    }
    // A silent surface of its own decodes the frame on its threads; the
    // answer comes back when the seek has put that frame in its slot.
    std::shared_ptr<VideoSurface> surface = ports_.players.makeVideoSurface(Uuid::random(), mediaPath(*item));
    surface->setVolume(0, true);
    std::weak_ptr<int> life = life_;
    surface->prepare(videoPrepareTimeoutSeconds, [life, surface, done = std::move(done)](VideoPreparation result) {
        if (life.expired()) return;
        const auto* info = std::get_if<VideoSurfaceInfo>(&result);
        if (info == nullptr) return done(std::nullopt);
        surface->seek(std::min(standbyFrameSeconds, info->durationSeconds), [life, surface, done] {
            if (life.expired()) return;
            const std::shared_ptr<const StillPixels> frame = surface->latestFrame();
            if (!frame) return done(std::nullopt);
            done(fitWithin(*frame, standbyWidth, standbyHeight));
        });
    });
}

} // namespace velarion
