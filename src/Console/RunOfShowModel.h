#pragma once
// RunOfShowModel: the run of show as one flat list for a QTreeView: each
// section's heading row followed by its cues. It reads an immutable Show
// snapshot (copying one shares its lists) and the engine's published state;
// column texts are made once per snapshot, when first asked for, so
// scrolling a 5,000-cue show allocates nothing per paint. Every change the
// operator makes here (rename, drop) becomes a ShowEdit through AppModel.
//
// Contract: main thread; the AppModel outlives the model. `updateShow` and
// `updateState` are called by the window when the model or engine changed.

#include "Live/AppModel.h"

#include <QAbstractItemModel>
#include <QIcon>
#include <QString>

#include <optional>
#include <unordered_map>
#include <vector>

namespace velarion::console {

class RunOfShowModel final : public QAbstractItemModel {
public:
    enum Column { numberColumn, nameColumn, descriptionColumn, lengthColumn, followColumn, targetsColumn, columnTotal };
    enum Role {
        isSectionRole = Qt::UserRole + 1,
        isNextRole,
        isRunningRole,
        progressRole, // 0…1, or -1 when running without a known length
        groupRole,    // index of the cue's playback group, -1 for none
        groupEdgeRole, // bit 1: first member, bit 2: last member
        isEnabledRole,
        // All a row's marks in one answer, for painting: the flags below,
        // and the group index + 1 from bit 8 (0: none).
        marksRole,
    };
    enum Mark { sectionMark = 1, nextMark = 2, runningMark = 4, groupStartMark = 8, groupEndMark = 16 };
    static inline const QString mimeType = QStringLiteral("application/x-velarion-cue-ids");
    // Library items dragged in: each becomes a new cue where it is dropped.
    static inline const QString mediaMimeType = QStringLiteral("application/x-velarion-media-ids");

    explicit RunOfShowModel(AppModel& model);

    // Takes the open show when it is a different snapshot; true when the
    // rows were rebuilt.
    bool updateShow();
    // Next, running cues and their progress; only rows that change are
    // announced.
    void updateState();

    QModelIndex indexOfCue(const Uuid& cueID, int column = nameColumn) const;
    std::optional<Uuid> cueAt(const QModelIndex& index) const;
    std::optional<Uuid> sectionAt(const QModelIndex& index) const;
    bool isSectionRow(int row) const { return row >= 0 && row < int(rows_.size()) && rows_[row].cue < 0; }

    // QAbstractItemModel
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex&) const override { return {}; }
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction | Qt::CopyAction; }
    Qt::DropActions supportedDragActions() const override { return Qt::MoveAction; }
    QStringList mimeTypes() const override { return {mimeType, mediaMimeType, QStringLiteral("text/uri-list")}; }
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

    // Where a drop at `row` lands: the section and the cue it goes before.
    struct DropPoint {
        Uuid section;
        std::optional<Uuid> before;
    };
    std::optional<DropPoint> dropPoint(int row) const;
    // Moves a cue's moment to `point` as one edit; false when refused.
    bool moveCue(const Uuid& cueID, const DropPoint& point);
    // A cue for each library item at `point`, as one edit, the last one
    // selected: "Added " and its name. False when refused or none is left.
    bool addMediaCues(const std::vector<Uuid>& itemIDs, const DropPoint& point);

private:
    struct Row {
        int section = 0;
        int cue = -1; // -1: the section's heading
        int number = 0;
        int group = -1;
        int groupEdge = 0;
    };
    struct Texts {
        QString number, name, description, length, follow, targets;
    };
    const Cue* cueOf(const Row& row) const;
    const Texts& textsOf(int row) const;
    void rebuild();

    AppModel& model_;
    std::optional<Show> show_;
    std::vector<Row> rows_;
    std::unordered_map<Uuid, int> rowOfCue_;
    mutable std::vector<std::optional<Texts>> texts_;
    std::vector<QIcon> kindIcons_;

    std::optional<Uuid> next_;
    std::unordered_map<Uuid, double> progress_; // running cues
    std::optional<int> scheduleDelta_;
    std::optional<int> liveSection_;
    std::uint64_t stateVersion_ = 0;
};

} // namespace velarion::console
