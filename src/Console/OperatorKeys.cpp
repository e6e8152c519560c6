#include "Console/OperatorKeys.h"

#include "Live/AppModel.h"
#include "Platform/App/QtKeyCodes.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWidget>

namespace velarion::console {

OperatorKeys::OperatorKeys(AppModel& model, QWidget& mainWindow) : model_(model), mainWindow_(mainWindow) {}

bool OperatorKeys::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return false;
    // Only the widget the key goes to first: a key passed up to a parent is
    // not read twice.
    if (auto* widget = qobject_cast<QWidget*>(watched); widget && widget != QApplication::focusWidget() &&
                                                        QApplication::focusWidget() != nullptr)
        return false;
    return handle(static_cast<QKeyEvent&>(*event), watched);
}

OperatorKeyContext OperatorKeys::context(QObject* receiver, Qt::KeyboardModifiers modifiers) const {
    OperatorKeyContext context;
    context.hasShow = model_.show().has_value();
    const auto* widget = qobject_cast<QWidget*>(receiver);
    const QWidget* window = widget ? widget->window() : QApplication::activeWindow();
    context.isMainWindow = window == &mainWindow_;
    const QWidget* focus = QApplication::focusWidget();
    context.isEditingText = qobject_cast<const QLineEdit*>(focus) || qobject_cast<const QTextEdit*>(focus) ||
                            qobject_cast<const QPlainTextEdit*>(focus) ||
                            qobject_cast<const QAbstractSpinBox*>(focus);
    context.hasNativeDialog = QApplication::activeModalWidget() != nullptr;
    context.hasCommandModifier = hasCommandModifier(modifiers);
    return context;
}

bool OperatorKeys::handle(QKeyEvent& event, QObject* receiver) {
    const std::uint16_t code = keyCodeFromQt(event.key(), event.modifiers());
    const auto action = OperatorKeyboard::action(code, context(receiver, event.modifiers()));
    if (!action) return false;
    // Modifier keys alone and keys that type nothing are no section letter.
    if (*action == OperatorKeyAction::sectionShortcut && event.text().trimmed().isEmpty()) return false;
    if (event.isAutoRepeat() && (*action == OperatorKeyAction::go || *action == OperatorKeyAction::panic))
        return true;
    perform(*action, event.text());
    return true;
}

void OperatorKeys::perform(OperatorKeyAction action, const QString& typed) {
    switch (action) {
    case OperatorKeyAction::go: model_.perform(command::Go{}); break;
    case OperatorKeyAction::panic: model_.perform(command::Panic{}); break;
    case OperatorKeyAction::armNext:
        if (model_.selectedCueID()) model_.perform(command::SetNext{model_.selectedCueID()});
        break;
    case OperatorKeyAction::nextSlide: model_.perform(command::NextSlide{}); break;
    case OperatorKeyAction::previousSlide: model_.perform(command::PreviousSlide{}); break;
    case OperatorKeyAction::toggleSafeSlide: {
        const EngineState* state = model_.engineState();
        model_.perform(command::SetHolding{!(state && state->holdingOn)});
        break;
    }
    case OperatorKeyAction::selectNext: moveSelection(1); break;
    case OperatorKeyAction::selectPrevious: moveSelection(-1); break;
    case OperatorKeyAction::sectionShortcut: jumpToSongSection(typed); break;
    }
}

void OperatorKeys::moveSelection(int step) {
    const auto& show = model_.show();
    if (!show) return;
    const auto& selected = model_.selectedCueID();
    // Walks the sections in place: no list of every cue is built per key.
    const auto target = [&]() -> std::optional<Uuid> {
        const Cue* previous = nullptr;
        bool takeNext = !selected;
        for (const Section& section : show->sections)
            for (const Cue& cue : section.cues) {
                if (takeNext) return cue.id;
                if (cue.id == *selected) {
                    if (step < 0) return previous ? std::optional<Uuid>(previous->id) : std::nullopt;
                    takeNext = true;
                }
                previous = &cue;
            }
        return std::nullopt;
    }();
    if (!target) return;
    model_.selectCue(target);
    if (onSelectionMoved) onSelectionMoved();
}

void OperatorKeys::jumpToSongSection(const QString& typed) {
    const EngineState* state = model_.engineState();
    const auto& show = model_.show();
    if (!state || !show || !state->activeDeckCueID || typed.isEmpty()) return;
    const Cue* cue = show->cue(*state->activeDeckCueID);
    const auto* slides = cue ? std::get_if<SlidesCue>(&cue->kind) : nullptr;
    const MediaItem* item = slides ? show->media(slides->deckID) : nullptr;
    if (!item || !item->deck) return;
    const std::string key = typed.left(1).toUpper().toStdString();
    if (const auto index = item->deck->slide(key, state->activeSlide.value_or(0)))
        model_.perform(command::GoToDeckSlide{cue->id, *index});
}

} // namespace velarion::console
