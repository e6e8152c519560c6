#pragma once
// LibraryPanel: the Library dock. Every media item of the show with its
// picture or waveform and length, missing ones flagged in the warning colour
// with "Find…" to put the file back; items drag into the run of show as
// cues. Files come in by the import panel or dropped from the file manager,
// with a progress bar and Cancel while they copy, and the alert of what
// didn't make it. "Preview" plays the selected sound or video's sound on the
// Headphones output, apart from the show.
//
// Contract: main thread; the AppModel outlives the panel. `refresh` reads
// the model and changes only what differs. The panel's LibraryPictures is
// shared with the Present view and lives as long as the panel.

#include <QWidget>

#include <functional>
#include <memory>

#include "Identity/Uuid.h"

class QLabel;
class QListView;
class QProgressBar;
class QPushButton;
class QTimer;

namespace velarion {
class AppModel;
}

namespace velarion::console {

class LibraryModel;
class LibraryPictures;

class LibraryPanel final : public QWidget {
public:
    static constexpr int previewTickMilliseconds = 100;

    explicit LibraryPanel(AppModel& model, QWidget* parent = nullptr);
    ~LibraryPanel() override;

    void refresh();
    // The file dialog of "Import Media…": the chosen files come in as items.
    void importPanel();
    // Asks for the missing item's file with AppModel::findMissingPrompt.
    void findMissing(const Uuid& itemID);

    LibraryModel& items() { return *items_; }
    QListView& list() { return *list_; }
    LibraryPictures& pictures() { return *pictures_; }
    QPushButton& previewButton() { return *preview_; }
    QPushButton& findButton() { return *find_; }
    QPushButton& cancelButton() { return *cancel_; }
    QProgressBar& progress() { return *progress_; }
    QLabel& alert() { return *alertText_; }

    // The file dialogs, replaceable for tests and tools: the files to
    // import, and the one file for a missing item (empty: cancelled).
    std::function<QStringList()> chooseFiles;
    std::function<QString(const QString& prompt)> chooseFile;

private:
    void togglePreview();
    void preferVisiblePictures();
    void updateButtons();
    void updateImport();

    AppModel& model_;
    std::unique_ptr<LibraryPictures> pictures_;
    std::unique_ptr<LibraryModel> items_;
    QListView* list_ = nullptr;
    QPushButton* import_ = nullptr;
    QPushButton* preview_ = nullptr;
    QPushButton* find_ = nullptr;
    QWidget* importRow_ = nullptr;
    QLabel* importText_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QWidget* alertBox_ = nullptr;
    QLabel* alertText_ = nullptr;
    QTimer* previewTimer_ = nullptr;
    bool following_ = false;
};

} // namespace velarion::console
