#pragma once
// OperatorKeys: the operator's single keys on the main window. An event
// filter on the whole application reads each key press before any widget,
// asks OperatorKeyboard what it means here and performs it through the
// model, so Esc is Panic even while a text field has the focus, and Space
// in a text field stays a space.
//
// Contract: main thread; the model and the main window outlive it. Install
// with QApplication::installEventFilter.

#include "Live/OperatorKeyboard.h"

#include <QObject>

#include <functional>
#include <optional>

class QWidget;
class QKeyEvent;

namespace velarion {
class AppModel;
}

namespace velarion::console {

class OperatorKeys final : public QObject {
public:
    OperatorKeys(AppModel& model, QWidget& mainWindow);

    // True when the key was the operator's and has been acted on.
    bool handle(QKeyEvent& event, QObject* receiver);
    // The action alone, for a key already read: what `handle` performs.
    void perform(OperatorKeyAction action, const QString& typed);

    // Called after a key moved the selection, so the list can scroll to it.
    std::function<void()> onSelectionMoved;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    OperatorKeyContext context(QObject* receiver, Qt::KeyboardModifiers modifiers) const;
    void moveSelection(int step);
    void jumpToSongSection(const QString& typed);

    AppModel& model_;
    QWidget& mainWindow_;
};

} // namespace velarion::console
