#pragma once
// The console's smaller pages: the start page shown when no show is open,
// and the History of the engine's log.
//
// Contract: main thread; the AppModel outlives each page. `refresh` reads
// the model and changes only what differs.

#include <QWidget>

#include <functional>
#include <optional>

#include "Identity/Uuid.h"

class QListWidget;
class QLabel;
class QVBoxLayout;

namespace velarion {
class AppModel;
}

namespace velarion::console {

class StartPage final : public QWidget {
public:
    StartPage(AppModel& model, std::function<void()> openPanel, QWidget* parent = nullptr);
    void refresh();
    QListWidget& recentList() { return *recents_; }
    // Opens a listed show: recent or unsaved, by its row in either list.
    void openRecent(int row);

private:
    AppModel& model_;
    QListWidget* recents_ = nullptr;
    QListWidget* unsaved_ = nullptr;
    QLabel* noRecents_ = nullptr;
    QLabel* unsavedHeading_ = nullptr;
};

class HistoryView final : public QWidget {
public:
    explicit HistoryView(AppModel& model, QWidget* parent = nullptr);
    void refresh();
    QListWidget& list() { return *list_; }

private:
    AppModel& model_;
    QListWidget* list_ = nullptr;
    std::optional<Uuid> newest_;
    const void* engine_ = nullptr;
};

} // namespace velarion::console
