// The inspector's pages for pictures: slides, video and image cues, and
// where a picture goes, with a drawn preview of its placement.

#include "Console/ConsoleTheme.h"
#include "Console/InspectorPages.h"

#include <QListWidget>
#include <QPainter>

#include <cmath>

namespace velarion::console {

namespace {

ChoiceItems layerChoices() {
    ChoiceItems items;
    for (std::size_t i = 0; i < enumCount<LayerKind>(); ++i) {
        const auto layer = static_cast<LayerKind>(i);
        items.emplace_back(enumKey(displayName(layer)), enumKey(toString(layer)));
    }
    return items;
}

template <class P> void mediaField(InspectorForm& form, const QString& label, MediaKind kind, Uuid P::*member) {
    form.choice(
        label, [kind, member](const Show& show, const Cue& cue) { return mediaChoices(show, kind, payload<P>(cue).*member); },
        [member](const Cue& cue) { return key(payload<P>(cue).*member); },
        [member](Cue& cue, const QString& value) {
            if (const auto id = uuidOf(value)) payload<P>(cue).*member = *id;
        });
}

template <class P> void layerField(InspectorForm& form) {
    enumChoice<LayerKind>(form, "Layer", layerChoices(), getter<P>(&P::layer), setter<P>(&P::layer));
}

InspectorForm* slidesPage(const PageContext& context) {
    auto* form = new InspectorForm("Slides", context.commit, context.parent);
    mediaField<SlidesCue>(*form, "Deck", MediaKind::deck, &SlidesCue::deckID);
    form->number(
        "First slide", [](const Cue& cue) { return double(payload<SlidesCue>(cue).startSlide + 1); },
        [](Cue& cue, double shown) { payload<SlidesCue>(cue).startSlide = int(std::lround(shown)) - 1; },
        {1, 100000, 0, ""});
    form->optionalNumber("Own dissolve", VELARION_FIELD(SlidesCue, &SlidesCue::dissolve), {0, 10, 2, " s"});
    return form;
}

InspectorForm* videoPage(const PageContext& context) {
    auto* form = new InspectorForm("Video", context.commit, context.parent);
    mediaField<VideoCue>(*form, "Video", MediaKind::video, &VideoCue::mediaID);
    layerField<VideoCue>(*form);
    form->number("In point", VELARION_FIELD(VideoCue, &VideoCue::inPoint), {0, 86400, 2, " s"});
    form->optionalNumber("Out point", VELARION_FIELD(VideoCue, &VideoCue::outPoint), {0, 86400, 2, " s"});
    form->number("Fade in", VELARION_FIELD(VideoCue, &VideoCue::fadeIn));
    form->number("Fade out", VELARION_FIELD(VideoCue, &VideoCue::fadeOut));
    form->number("Level", VELARION_FIELD(VideoCue, &VideoCue::level), percentFormat());
    form->toggle("Loops", VELARION_FIELD(VideoCue, &VideoCue::loops));
    form->choice(
        "Crossfade the loop", [](const Show&, const Cue&) { return optionalSwitchChoices(); },
        [](const Cue& cue) { return optionalSwitchKey(payload<VideoCue>(cue).crossfadesLoop); },
        [](Cue& cue, const QString& value) { payload<VideoCue>(cue).crossfadesLoop = optionalSwitchValue(value); });
    form->toggle("Hold last frame", VELARION_FIELD(VideoCue, &VideoCue::holdLastFrame));
    optionalEnumChoice<VideoMusicRule>(
        *form, "Music playing",
        fixedChoices({{"", "Automatic (fade it out)"}, {"fadeOut", "Fade it out"}, {"dip", "Dip it"}, {"leave", "Leave it"}}),
        getter<VideoCue>(&VideoCue::musicRule), setter<VideoCue>(&VideoCue::musicRule));
    return form;
}

InspectorForm* imagePage(const PageContext& context) {
    auto* form = new InspectorForm("Image", context.commit, context.parent);
    mediaField<ImageCue>(*form, "Image", MediaKind::image, &ImageCue::mediaID);
    layerField<ImageCue>(*form);
    form->number("Fade in", VELARION_FIELD(ImageCue, &ImageCue::fadeIn));
    return form;
}

// A small screen with the placed picture drawn in it, turned and faded as
// the placement says.
class PlacementPreview final : public QWidget {
public:
    explicit PlacementPreview(QWidget* parent) : QWidget(parent) { setFixedHeight(110); }
    void setGeometry(const CueGeometry& geometry) {
        if (geometry == geometry_) return;
        geometry_ = geometry;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const double height = this->height() - 8.0;
        const double width = std::min(this->width() - 8.0, height * 16 / 9);
        const QRectF screen((this->width() - width) / 2, 4, width, width * 9 / 16);
        painter.fillRect(screen, Qt::black);
        painter.setPen(QPen(colour::dimText, 1));
        painter.drawRect(screen);
        const CueGeometry::Rect frame = geometry_.frame();
        const QRectF placed(screen.left() + frame.left * screen.width(), screen.top() + frame.top * screen.height(),
                            frame.width * screen.width(), frame.height * screen.height());
        painter.save();
        painter.setClipRect(screen);
        painter.translate(placed.center());
        painter.rotate(geometry_.rotation);
        painter.translate(-placed.center());
        QColor fill = colour::next;
        fill.setAlphaF(float(0.25 + 0.6 * geometry_.opacity));
        painter.fillRect(placed, fill);
        painter.setPen(QPen(colour::text, 1));
        painter.drawRect(placed);
        painter.restore();
    }

private:
    CueGeometry geometry_ = CueGeometry::full();
};

CueGeometry placement(const Cue& cue) { return cue.geometry.value_or(CueGeometry::full()); }

// One number of the placement; the whole placement goes through its limits,
// and the full frame is stored as no placement at all.
void placementNumber(InspectorForm& form, const QString& label, double CueGeometry::*member, NumberFormat format) {
    form.number(
        label, [member](const Cue& cue) { return placement(cue).*member; },
        [member](Cue& cue, double value) {
            CueGeometry g = placement(cue);
            g.*member = value;
            g = CueGeometry::make(g.scale, g.x, g.y, g.rotation, g.opacity);
            cue.geometry = g.isFull() ? std::nullopt : std::optional(g);
        },
        format);
}

// "Every screen", then each screen of the show by name.
void screensField(InspectorForm& form) {
    auto* list = new QListWidget(&form);
    list->setFixedHeight(96);
    QObject::connect(list, &QListWidget::itemChanged, &form, [&form, list](QListWidgetItem* changed) {
        if (form.isLoading()) return;
        std::vector<std::string> ids;
        for (int i = 1; i < list->count(); ++i) {
            const bool on = list->item(i) == changed ? changed->checkState() == Qt::Checked
                                                       : list->item(i)->checkState() == Qt::Checked;
            if (on) ids.push_back(list->item(i)->data(Qt::UserRole).toString().toStdString());
        }
        const bool every = list->item(0) == changed && changed->checkState() == Qt::Checked;
        form.commit([every, ids](Cue& cue) {
            if (every) cue.visualOutputIDs.reset();
            else cue.visualOutputIDs = ids;
        });
    });
    form.row("Screens", list, [list](const Show& show, const Cue& cue) {
        const auto screens = show.outputs.effectiveScreens();
        if (list->count() != int(screens.size()) + 1) {
            list->clear();
            list->addItem("Every screen");
            for (const LogicalScreen& screen : screens) list->addItem(QString::fromStdString(screen.name));
        }
        const auto state = [](bool on) { return on ? Qt::Checked : Qt::Unchecked; };
        list->item(0)->setCheckState(state(!cue.visualOutputIDs));
        for (std::size_t i = 0; i < screens.size(); ++i) {
            QListWidgetItem* item = list->item(int(i) + 1);
            item->setText(QString::fromStdString(screens[i].name));
            item->setData(Qt::UserRole, QString::fromStdString(screens[i].id));
            const bool on = !cue.visualOutputIDs ||
                            std::ranges::find(*cue.visualOutputIDs, screens[i].id) != cue.visualOutputIDs->end();
            item->setCheckState(state(on));
        }
    });
}

} // namespace

InspectorForm* picturePage(CueKindCase kind, const PageContext& context) {
    switch (kind) {
    case CueKindCase::slides: return slidesPage(context);
    case CueKindCase::video: return videoPage(context);
    case CueKindCase::image: return imagePage(context);
    default: return nullptr;
    }
}

InspectorForm* placementForm(const PageContext& context) {
    auto* form = new InspectorForm("Placement and screens", context.commit, context.parent);
    auto* preview = new PlacementPreview(form);
    preview->setObjectName("placementPreview");
    form->row("", preview, [preview](const Show&, const Cue& cue) { preview->setGeometry(placement(cue)); });
    placementNumber(*form, "Size", &CueGeometry::scale, {0.05, 4, 0, " %", 100});
    placementNumber(*form, "Across", &CueGeometry::x, {-1, 1, 0, " %", 100});
    placementNumber(*form, "Down", &CueGeometry::y, {-1, 1, 0, " %", 100});
    placementNumber(*form, "Turn", &CueGeometry::rotation, {-3600, 3600, 1, "°"});
    placementNumber(*form, "Opacity", &CueGeometry::opacity, percentFormat());
    screensField(*form);
    form->toggle(
        "Keep what's on screen", [](const Cue& cue) { return cue.keepOnScreen.value_or(false); },
        [](Cue& cue, bool on) { cue.keepOnScreen = on ? std::optional(true) : std::nullopt; });
    optionalEnumChoice<CueOperatorView>(*form, "Brings up",
                                        fixedChoices({{"", "No change"}, {"cues", "Cue list"}, {"slides", "Slides"}}),
                                        [](const Cue& cue) { return cue.operatorView; },
                                        [](Cue& cue, std::optional<CueOperatorView> view) { cue.operatorView = view; });
    return form;
}

ChoiceItems optionalSwitchChoices() { return fixedChoices({{"", "Automatic"}, {"on", "On"}, {"off", "Off"}}); }
QString optionalSwitchKey(const std::optional<bool>& value) { return value ? (*value ? "on" : "off") : ""; }
std::optional<bool> optionalSwitchValue(const QString& key) {
    if (key.isEmpty()) return std::nullopt;
    return key == "on";
}

} // namespace velarion::console
