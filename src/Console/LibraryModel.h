#pragma once
// LibraryModel: the show's media items as one list for the Library panel,
// each with its picture (a thumbnail, a video's poster, a deck's first
// page) or a sound's waveform from AppModel::caches(), its length, and
// whether its files are missing. Pictures and the missing check come from
// LibraryPictures' worker; until an item's answer is in, it shows its kind.
// Items drag out as their ids (a cue where they land in the run of show);
// files dropped in from the file manager are imported.
//
// Contract: main thread; the AppModel and the LibraryPictures outlive the
// model. `update` is called by the panel when the model changed.

#include "Live/AppModel.h"

#include <QAbstractListModel>
#include <QSize>

#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace velarion::console {

class LibraryPictures;

class LibraryModel final : public QAbstractListModel {
public:
    struct Row {
        Uuid id;
        MediaKind kind = MediaKind::video;
        QString name;
        QString detail; // "Video · 3:25", "Song · 8 slides"
        std::string key; // the picture's name in the caches; empty: none
        bool hasSound = false;
    };
    static constexpr QSize thumbnailSize{96, 54};

    LibraryModel(AppModel& model, LibraryPictures& pictures);

    // Takes the show's library when it is a different snapshot; true when
    // the rows were rebuilt. Pictures not asked for yet are asked for.
    bool update();

    const Row& row(int index) const { return rows_[std::size_t(index)]; }
    QModelIndex indexOfItem(const Uuid& itemID) const;
    std::optional<Uuid> itemAt(const QModelIndex& index) const;
    // From the caches; null while loading or for items without one.
    const StillImage* picture(const Row& row) const;
    const std::vector<float>* peaks(const Row& row) const;
    bool isMissing(const Row& row) const { return missing_.count(row.key) > 0; }
    bool isLoaded(const Row& row) const { return row.key.empty() || answered_.count(row.key) > 0; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }
    Qt::DropActions supportedDropActions() const override { return Qt::CopyAction | Qt::MoveAction; }
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

private:
    void rebuild();
    void requestPictures();
    void answered(const std::string& key, bool isMissing, std::optional<StillImage> picture, std::vector<float> peaks);

    AppModel& model_;
    LibraryPictures& pictures_;
    std::optional<Uuid> showID_;
    std::filesystem::path package_;
    SharedList<MediaItem> library_;
    bool hasLibrary_ = false;
    std::vector<Row> rows_;
    std::unordered_map<Uuid, int> rowOfItem_;
    std::unordered_map<std::string, std::vector<int>> rowsOfKey_;
    std::set<std::string> requested_;
    std::set<std::string> answered_;
    std::set<std::string> missing_;
};

// "3:25", "1:02:07".
QString durationText(double seconds);

} // namespace velarion::console
