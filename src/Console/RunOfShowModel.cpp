#include "Console/RunOfShowModel.h"
#include "Console/ConsoleText.h"

#include "Console/ConsoleTheme.h"
#include "Console/CueText.h"
#include "Console/KindIcons.h"
#include "LiveModel/CueDescription.h"

#include <QFont>
#include <QMimeData>
#include <QUrl>
#include <QTimer>

namespace velarion::console {

namespace {

bool sameSnapshot(const Show& a, const Show& b) {
    return a.sections.sharesStorageWith(b.sections) && a.library.sharesStorageWith(b.library) &&
           a.cueGroups == b.cueGroups && a.outputs == b.outputs;
}

} // namespace

RunOfShowModel::RunOfShowModel(AppModel& model) : model_(model), kindIcons_(makeKindIcons()) {}

bool RunOfShowModel::updateShow() {
    const auto& show = model_.show();
    if (show && show_ && sameSnapshot(*show, *show_)) return false;
    if (!show && !show_) return false;
    beginResetModel();
    show_ = show;
    rebuild();
    endResetModel();
    stateVersion_ = 0;
    updateState();
    return true;
}

void RunOfShowModel::rebuild() {
    rows_.clear();
    rowOfCue_.clear();
    texts_.clear();
    if (!show_) return;
    std::unordered_map<Uuid, int> groupOf;
    if (show_->cueGroups)
        for (std::size_t g = 0; g < show_->cueGroups->size(); ++g)
            for (const Uuid& id : (*show_->cueGroups)[g].cueIDs) groupOf.emplace(id, int(g));
    int number = 0;
    for (std::size_t s = 0; s < show_->sections.size(); ++s) {
        rows_.push_back(Row{int(s), -1, 0, -1, 0});
        const Section& section = show_->sections[s];
        for (std::size_t c = 0; c < section.cues.size(); ++c) {
            Row row{int(s), int(c), ++number, -1, 0};
            if (auto found = groupOf.find(section.cues[c].id); found != groupOf.end()) row.group = found->second;
            rowOfCue_.emplace(section.cues[c].id, int(rows_.size()));
            rows_.push_back(row);
        }
    }
    // Group edges: where the stripe of a group begins and ends.
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        Row& row = rows_[i];
        if (row.group < 0) continue;
        const bool first = i == 0 || rows_[i - 1].group != row.group;
        const bool last = i + 1 == rows_.size() || rows_[i + 1].group != row.group;
        row.groupEdge = (first ? 1 : 0) | (last ? 2 : 0);
    }
    texts_.resize(rows_.size());
}

const Cue* RunOfShowModel::cueOf(const Row& row) const {
    if (!show_ || row.cue < 0) return nullptr;
    return &show_->sections[std::size_t(row.section)].cues[std::size_t(row.cue)];
}

const RunOfShowModel::Texts& RunOfShowModel::textsOf(int rowIndex) const {
    auto& cached = texts_[std::size_t(rowIndex)];
    if (cached) return *cached;
    const Row& row = rows_[std::size_t(rowIndex)];
    Texts texts;
    if (const Cue* cue = cueOf(row)) {
        texts.number = QString::number(row.number);
        texts.name = qt(cue->name);
        texts.description = qt(cueDescription(*cue, *show_));
        texts.length = qt(cueLengthText(*cue, *show_));
        texts.follow = qt(followText(show_->effectiveFollow(*cue)));
        texts.targets = qt(targetsText(*cue, *show_));
    } else {
        const Section& section = show_->sections[std::size_t(row.section)];
        texts.name = qt(section.title);
        texts.description = qt(sectionPlanText(section));
        const std::size_t count = section.cues.size();
        texts.length = QString::number(count) + (count == 1 ? " cue" : " cues");
    }
    cached = std::move(texts);
    return *cached;
}

void RunOfShowModel::updateState() {
    const LiveEngine* engine = model_.engine();
    if (!engine || !show_) {
        next_.reset();
        progress_.clear();
        return;
    }
    if (engine->stateVersion() == stateVersion_) return;
    stateVersion_ = engine->stateVersion();
    const EngineState& state = engine->state();
    std::vector<int> changed;
    if (state.nextCueID != next_) {
        if (next_) if (auto row = rowOfCue_.find(*next_); row != rowOfCue_.end()) changed.push_back(row->second);
        next_ = state.nextCueID;
        if (next_) if (auto row = rowOfCue_.find(*next_); row != rowOfCue_.end()) changed.push_back(row->second);
    }
    std::unordered_map<Uuid, double> progress;
    for (const RunningCue& running : state.running) {
        double value = -1;
        if (running.durationSeconds && *running.durationSeconds > 0)
            value = std::clamp(running.elapsedSeconds / *running.durationSeconds, 0.0, 1.0);
        progress[running.cueID] = value;
    }
    for (const auto& [cueID, value] : progress) {
        auto old = progress_.find(cueID);
        if (old == progress_.end() || old->second != value)
            if (auto row = rowOfCue_.find(cueID); row != rowOfCue_.end()) changed.push_back(row->second);
    }
    for (const auto& [cueID, value] : progress_)
        if (!progress.contains(cueID))
            if (auto row = rowOfCue_.find(cueID); row != rowOfCue_.end()) changed.push_back(row->second);
    progress_ = std::move(progress);
    for (int row : changed) emit dataChanged(index(row, 0), index(row, columnTotal - 1));
    // The schedule's word goes on the heading of the section now playing.
    std::optional<int> liveSection;
    if (state.lastFiredCueID)
        if (auto row = rowOfCue_.find(*state.lastFiredCueID); row != rowOfCue_.end())
            liveSection = rows_[std::size_t(row->second)].section;
    if (liveSection != liveSection_ || state.scheduleDeltaMinutes != scheduleDelta_) {
        for (int section : {liveSection_.value_or(-1), liveSection.value_or(-1)})
            for (std::size_t r = 0; section >= 0 && r < rows_.size(); ++r)
                if (rows_[r].cue < 0 && rows_[r].section == section) emit dataChanged(index(int(r), 0), index(int(r), columnTotal - 1));
        liveSection_ = liveSection;
        scheduleDelta_ = state.scheduleDeltaMinutes;
    }
}

QModelIndex RunOfShowModel::indexOfCue(const Uuid& cueID, int column) const {
    auto row = rowOfCue_.find(cueID);
    return row == rowOfCue_.end() ? QModelIndex() : index(row->second, column);
}

std::optional<Uuid> RunOfShowModel::cueAt(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= int(rows_.size())) return std::nullopt;
    const Cue* cue = cueOf(rows_[std::size_t(index.row())]);
    return cue ? std::optional<Uuid>(cue->id) : std::nullopt;
}

std::optional<Uuid> RunOfShowModel::sectionAt(const QModelIndex& index) const {
    if (!index.isValid() || !show_ || index.row() >= int(rows_.size())) return std::nullopt;
    return show_->sections[std::size_t(rows_[std::size_t(index.row())].section)].id;
}

QModelIndex RunOfShowModel::index(int row, int column, const QModelIndex& parent) const {
    if (parent.isValid() || row < 0 || row >= int(rows_.size()) || column < 0 || column >= columnTotal) return {};
    return createIndex(row, column);
}

int RunOfShowModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(rows_.size()); }
int RunOfShowModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : columnTotal; }

QVariant RunOfShowModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const Row& row = rows_[std::size_t(index.row())];
    const Cue* cue = cueOf(row);
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole: {
        const Texts& texts = textsOf(index.row());
        switch (column) {
        case numberColumn:
            // A heading spans the row: its whole line lives in the first column.
            if (!cue) {
                QString line = texts.name;
                if (!texts.description.isEmpty()) line += QStringLiteral("   ·   ") + texts.description;
                line += QStringLiteral("   ·   ") + texts.length;
                if (liveSection_ == row.section && scheduleDelta_)
                    line += QStringLiteral("   ·   ") + qt(scheduleText(*scheduleDelta_));
                return line;
            }
            return texts.number;
        case nameColumn: return texts.name;
        case descriptionColumn: return texts.description;
        case lengthColumn: return texts.length;
        case followColumn: return texts.follow;
        case targetsColumn: return texts.targets;
        }
        return {};
    }
    case Qt::DecorationRole:
        if (cue && column == nameColumn) return kindIcons_[std::size_t(cueKind::rank(cue->kind))];
        return {};
    case Qt::ForegroundRole:
        if (cue && !cue->isEnabled) return colour::dimText;
        if (!cue) return colour::dimText;
        if (column != nameColumn) return QColor(0xb0, 0xb5, 0xbd);
        return {};
    case Qt::FontRole:
        if (!cue) {
            QFont font;
            font.setBold(true);
            return font;
        }
        if (!cue->isEnabled) {
            QFont font;
            font.setItalic(true);
            return font;
        }
        return {};
    case Qt::ToolTipRole:
        if (cue && row.group >= 0 && show_->cueGroups)
            return QStringLiteral("Group: ") + qt((*show_->cueGroups)[std::size_t(row.group)].name);
        return {};
    case isSectionRole: return cue == nullptr;
    case isNextRole: return cue && next_ && *next_ == cue->id;
    case isRunningRole: return cue && progress_.contains(cue->id);
    case progressRole:
        if (cue)
            if (auto found = progress_.find(cue->id); found != progress_.end()) return found->second;
        return {};
    case groupRole: return row.group;
    case groupEdgeRole: return row.groupEdge;
    case isEnabledRole: return cue ? cue->isEnabled : true;
    case marksRole: {
        int marks = cue ? 0 : sectionMark;
        if (cue && next_ && *next_ == cue->id) marks |= nextMark;
        if (cue && progress_.contains(cue->id)) marks |= runningMark;
        if (row.groupEdge & 1) marks |= groupStartMark;
        if (row.groupEdge & 2) marks |= groupEndMark;
        return marks | ((row.group + 1) << 8);
    }
    }
    return {};
}

QVariant RunOfShowModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    static const char* titles[columnTotal] = {"#", "Cue", "Does", "Length", "Follow", "Plays on"};
    return section >= 0 && section < columnTotal ? QString(titles[section]) : QVariant();
}

Qt::ItemFlags RunOfShowModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::ItemIsDropEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
    const bool isCue = rows_[std::size_t(index.row())].cue >= 0;
    if (!model_.isLocked()) {
        if (index.column() == nameColumn) flags |= Qt::ItemIsEditable;
        if (isCue) flags |= Qt::ItemIsDragEnabled;
    }
    return flags;
}

bool RunOfShowModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || index.column() != nameColumn || !show_) return false;
    const std::string name = value.toString().trimmed().toStdString();
    const Row& row = rows_[std::size_t(index.row())];
    if (const Cue* cue = cueOf(row)) {
        if (cue->name == name) return false;
        Cue renamed = *cue;
        renamed.name = name;
        return model_.edit(edit::UpdateCue{renamed});
    }
    const Section& section = show_->sections[std::size_t(row.section)];
    if (section.title == name) return false;
    return model_.edit(edit::RenameSection{section.id, name});
}

QMimeData* RunOfShowModel::mimeData(const QModelIndexList& indexes) const {
    QStringList ids;
    for (const QModelIndex& index : indexes)
        if (index.column() == 0)
            if (auto id = cueAt(index)) ids << qt(id->text());
    if (ids.isEmpty()) return nullptr;
    auto* data = new QMimeData;
    data->setData(mimeType, ids.join('\n').toUtf8());
    return data;
}

std::optional<RunOfShowModel::DropPoint> RunOfShowModel::dropPoint(int row) const {
    if (!show_ || show_->sections.empty()) return std::nullopt;
    if (row < 0 || row >= int(rows_.size())) return DropPoint{show_->sections.back().id, std::nullopt};
    const Row& at = rows_[std::size_t(row)];
    if (const Cue* cue = cueOf(at)) return DropPoint{show_->sections[std::size_t(at.section)].id, cue->id};
    // On a heading: the end of the section above, or the top of the first.
    if (at.section == 0) {
        const Section& first = show_->sections.front();
        return DropPoint{first.id, first.cues.empty() ? std::nullopt : std::optional<Uuid>(first.cues.front().id)};
    }
    return DropPoint{show_->sections[std::size_t(at.section - 1)].id, std::nullopt};
}

bool RunOfShowModel::moveCue(const Uuid& cueID, const DropPoint& point) {
    if (point.before && *point.before == cueID) return false;
    return model_.edit(edit::MoveMomentToSection{cueID, point.section, point.before});
}

bool RunOfShowModel::addMediaCues(const std::vector<Uuid>& itemIDs, const DropPoint& point) {
    if (!model_.show()) return false;
    std::vector<Cue> cues;
    for (const Uuid& id : itemIDs)
        if (const MediaItem* item = model_.show()->media(id)) cues.push_back(AppModel::makeCue(*item));
    if (cues.empty() || !model_.edit(edit::InsertCues{cues, point.section, point.before})) return false;
    model_.selectCue(cues.back().id);
    model_.setStatus("Added " + cues.back().name);
    return true;
}

bool RunOfShowModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int, const QModelIndex& parent) {
    const QString format = data->hasFormat(mimeType) && action == Qt::MoveAction ? mimeType
                           : data->hasFormat(mediaMimeType)                      ? mediaMimeType
                                                                                 : QString();
    if (format.isEmpty() && !data->hasUrls()) return false;
    if (row < 0 && parent.isValid()) row = parent.row();
    const auto point = dropPoint(row);
    if (!point) return false;
    if (format.isEmpty()) {
        // Files from the file manager: imported, with their cues landing here.
        std::vector<std::filesystem::path> files;
        for (const QUrl& url : data->urls())
            if (url.isLocalFile()) files.emplace_back(url.toLocalFile().toStdString());
        model_.importFiles(files, true, CueInsertionPoint{point->section, point->before});
        return !files.empty();
    }
    std::vector<Uuid> ids;
    for (const QString& text : QString::fromUtf8(data->data(format)).split('\n'))
        if (auto id = Uuid::parse(text.toStdString())) ids.push_back(*id);
    // The edit waits for the drag to finish: the rows it rebuilds are the
    // ones the view is still dropping on.
    QTimer::singleShot(0, this, [this, ids, point = *point, format] {
        if (format == mediaMimeType) addMediaCues(ids, point);
        else for (const Uuid& id : ids) moveCue(id, point);
    });
    return false;
}

} // namespace velarion::console
