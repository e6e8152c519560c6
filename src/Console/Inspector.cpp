#include "Console/Inspector.h"
#include "Console/ConsoleText.h"

#include "Console/InspectorPages.h"
#include "Live/AppModel.h"
#include "LiveEngine/MediaTrim.h"
#include "LiveModel/CueLimits.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QEvent>
#include <QScrollBar>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QSpinBox>
#include <QTimeEdit>
#include <QVBoxLayout>

#include <cmath>

namespace velarion::console {

namespace {

template <class Payload> void trim(Payload& media, const Show& show) {
    const MediaItem* item = show.media(media.mediaID);
    const std::optional<double> duration = item ? item->duration : std::nullopt;
    media.inPoint = mediaTrim::inPoint(media.inPoint, media.outPoint, duration);
    media.outPoint = mediaTrim::outPoint(media.outPoint, media.inPoint, duration);
}

// The cue as the building operations leave it: every field in its limits,
// In and Out marks inside the media's length.
Cue limited(const Cue& changed, const Show& show) {
    Cue cue = cueLimits::limited(changed);
    if (auto* video = std::get_if<VideoCue>(&cue.kind)) trim(*video, show);
    if (auto* audio = std::get_if<AudioCue>(&cue.kind)) trim(*audio, show);
    return cue;
}

void showIf(QWidget* widget, bool visible) {
    if (widget->isVisibleTo(widget->parentWidget()) != visible) widget->setVisible(visible);
}

} // namespace

Inspector::Inspector(AppModel& model, QWidget* parent) : QScrollArea(parent), model_(model) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    auto* body = new QWidget(this);
    auto* column = new QVBoxLayout(body);
    column->setContentsMargins(10, 8, 10, 8);
    column->setSpacing(2);
    heading_ = new QLabel(body);
    heading_->setObjectName("inspectorTitle");
    heading_->setWordWrap(true);
    heading_->setStyleSheet("font-size: 13pt; font-weight: bold;");
    column->addWidget(heading_);
    empty_ = new QLabel(nothingSelected, body);
    empty_->setWordWrap(true);
    empty_->setStyleSheet("color: #808690;");
    column->addWidget(empty_);

    const auto together = [this](CueChange change) { apply(change, false); };
    const PageContext context{model_, together, body};
    identity_ = new InspectorForm("", [this](CueChange change) { apply(change, true); }, body);
    identity_->text("Name", [](const Cue& cue) { return cue.name; }, [](Cue& cue, const std::string& name) { cue.name = name; });
    identity_->text("Notes", [](const Cue& cue) { return cue.notes; }, [](Cue& cue, const std::string& notes) { cue.notes = notes; });
    identity_->text(
        "Description", [](const Cue& cue) { return cue.descriptionOverride.value_or(""); },
        [](Cue& cue, const std::string& text) { cue.descriptionOverride = text.empty() ? std::nullopt : std::optional(text); });
    column->addWidget(identity_);
    for (std::size_t i = 0; i < pages_.size(); ++i) {
        const auto kind = static_cast<CueKindCase>(i);
        InspectorForm* page = picturePage(kind, context);
        if (!page) page = soundPage(kind, context);
        if (!page) page = wordsPage(kind, context);
        pages_[i] = page;
        column->addWidget(page);
    }
    placement_ = placementForm(context);
    column->addWidget(placement_);
    musicOut_ = musicOutForm(context);
    column->addWidget(musicOut_);
    starting_ = startingForm(context);
    column->addWidget(starting_);
    buildSection(body);
    column->addWidget(section_);
    column->addStretch(1);
    setWidget(body);
    // The wheel scrolls the page unless a field was clicked first, so that
    // scrolling past a level never changes it.
    for (QWidget* field : body->findChildren<QWidget*>())
        if (qobject_cast<QAbstractSpinBox*>(field) || qobject_cast<QComboBox*>(field)) {
            field->setFocusPolicy(Qt::StrongFocus);
            field->installEventFilter(this);
        }
    // A half-typed text goes in before GO moves the show on.
    for (QLineEdit* field : body->findChildren<QLineEdit*>()) {
        if (qobject_cast<QAbstractSpinBox*>(field->parentWidget())) continue;
        connect(field, &QLineEdit::textEdited, this, [this, field = QPointer<QLineEdit>(field)] {
            model_.setPendingEdit(this, [field] {
                if (field) emit field->editingFinished();
            });
        });
    }
    refresh();
}

bool Inspector::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Wheel || static_cast<QWidget*>(watched)->hasFocus()) return false;
    QCoreApplication::sendEvent(verticalScrollBar(), event);
    return true;
}

void Inspector::buildSection(QWidget* parent) {
    section_ = new QWidget(parent);
    auto* form = new QFormLayout(section_);
    form->setContentsMargins(0, 6, 0, 6);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    const auto label = [this](const char* words) {
        auto* made = new QLabel(words, section_);
        made->setMinimumWidth(InspectorForm::labelWidth);
        made->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        return made;
    };
    sectionTitle_ = new QLineEdit(section_);
    sectionTitle_->setAccessibleName("Title");
    form->addRow(label("Title"), sectionTitle_);
    connect(sectionTitle_, &QLineEdit::editingFinished, this, [this] {
        if (!sectionTitle_->isModified() || !shownSection_) return;
        sectionTitle_->setModified(false);
        model_.edit(edit::RenameSection{*shownSection_, sectionTitle_->text().toStdString()});
        refresh();
    });
    auto* startRow = new QHBoxLayout;
    hasStart_ = new QCheckBox(section_);
    start_ = new QTimeEdit(section_);
    start_->setDisplayFormat("HH:mm");
    startRow->addWidget(hasStart_);
    startRow->addWidget(start_, 1);
    form->addRow(label("Planned start"), startRow);
    auto* lengthRow = new QHBoxLayout;
    hasLength_ = new QCheckBox(section_);
    length_ = new QSpinBox(section_);
    length_->setRange(0, 24 * 60);
    length_->setSuffix(" min");
    length_->setKeyboardTracking(false);
    lengthRow->addWidget(hasLength_);
    lengthRow->addWidget(length_, 1);
    form->addRow(label("Planned length"), lengthRow);
    connect(hasStart_, &QCheckBox::clicked, this, [this] { commitSchedule(); });
    connect(start_, &QTimeEdit::editingFinished, this, [this] { commitSchedule(); });
    connect(hasLength_, &QCheckBox::clicked, this, [this] { commitSchedule(); });
    connect(length_, &QSpinBox::editingFinished, this, [this] { commitSchedule(); });
}

void Inspector::commitSchedule() {
    if (!shownSection_) return;
    std::optional<int> start, minutes;
    if (hasStart_->isChecked()) start = start_->time().hour() * 60 + start_->time().minute();
    if (hasLength_->isChecked()) minutes = length_->value();
    const auto& show = model_.show();
    const auto at = std::ranges::find(show->sections, *shownSection_, &Section::id);
    if (at != show->sections.end() && at->plannedStart == start && at->plannedMinutes == minutes) return;
    model_.edit(edit::SetSectionSchedule{*shownSection_, start, minutes});
    refresh();
}

void Inspector::loadSection(const Section& section) {
    const QString title = qt(section.title);
    if (sectionTitle_->text() != title) sectionTitle_->setText(title);
    sectionTitle_->setModified(false);
    hasStart_->setChecked(section.plannedStart.has_value());
    start_->setEnabled(section.plannedStart.has_value());
    const int minute = section.plannedStart.value_or(9 * 60);
    const QTime at(minute / 60 % 24, minute % 60);
    if (start_->time() != at) start_->setTime(at);
    hasLength_->setChecked(section.plannedMinutes.has_value());
    length_->setEnabled(section.plannedMinutes.has_value());
    if (length_->value() != section.plannedMinutes.value_or(30)) length_->setValue(section.plannedMinutes.value_or(30));
}

std::vector<const Cue*> Inspector::targets(const Cue& shown, bool alone) const {
    std::vector<const Cue*> cues{&shown};
    if (alone || !selectedCues) return cues;
    for (const Uuid& id : selectedCues())
        if (const Cue* cue = model_.show()->cue(id); cue && cue != &shown && cue->kind.index() == shown.kind.index())
            cues.push_back(cue);
    return cues;
}

void Inspector::apply(const std::function<void(Cue&)>& change, bool alone) {
    if (!model_.show() || !shownCue_) return;
    const Show& show = *model_.show();
    const Cue* shown = show.cue(*shownCue_);
    if (!shown) return;
    std::vector<ShowEdit> edits;
    for (const Cue* cue : targets(*shown, alone)) {
        Cue changed = *cue;
        change(changed);
        changed = limited(changed, show);
        if (changed != *cue) edits.emplace_back(edit::UpdateCue{std::move(changed)});
    }
    if (!edits.empty()) model_.editTogether(edits);
    // Shows what the show took: the limited value, or the old one after a
    // refusal.
    refresh();
}

void Inspector::refresh() {
    const auto& show = model_.show();
    const std::optional<Uuid> sectionID = show && selectedSection ? selectedSection() : std::nullopt;
    const Section* section = nullptr;
    if (sectionID)
        for (const Section& candidate : show->sections)
            if (candidate.id == *sectionID) section = &candidate;
    const Cue* cue = !section && show && model_.selectedCueID() ? show->cue(*model_.selectedCueID()) : nullptr;
    shownCue_ = cue ? std::optional(cue->id) : std::nullopt;
    shownSection_ = section ? std::optional(section->id) : std::nullopt;

    showIf(empty_, !cue && !section);
    showIf(section_, section != nullptr);
    showIf(identity_, cue != nullptr);
    showIf(starting_, cue != nullptr);
    showIf(placement_, cue && cueKind::isPicture(cue->kind));
    showIf(musicOut_, cue && cueKind::isMusic(cue->kind));
    for (std::size_t i = 0; i < pages_.size(); ++i) showIf(pages_[i], cue && cue->kind.index() == i);

    QString title;
    if (section) {
        title = "Section";
        loadSection(*section);
    } else if (cue) {
        const std::size_t together = targets(*cue, false).size();
        title = QString("Cue %1 · ").arg(show->number(cue->id).value_or(0)) + qt(std::string(cueKind::label(cue->kind)));
        if (together > 1)
            title += QString(" — %1 selected, changed together").arg(together);
        identity_->load(*show, *cue);
        pages_[cue->kind.index()]->load(*show, *cue);
        starting_->load(*show, *cue);
        if (cueKind::isPicture(cue->kind)) placement_->load(*show, *cue);
        if (cueKind::isMusic(cue->kind)) musicOut_->load(*show, *cue);
    }
    if (heading_->text() != title) heading_->setText(title);
    showIf(heading_, !title.isEmpty());
}

} // namespace velarion::console
