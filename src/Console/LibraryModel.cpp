#include "Console/LibraryModel.h"
#include "Console/ConsoleText.h"

#include "Console/LibraryPictures.h"
#include "Console/RunOfShowModel.h"

#include <QMimeData>
#include <QUrl>

namespace velarion::console {

namespace {

QString detailOf(const MediaItem& item) {
    QString detail = item.song ? QStringLiteral("Song") : qt(std::string(displayName(item.kind)));
    if (item.ndiSource) return detail + QStringLiteral(" · NDI");
    if (item.deck) {
        const std::size_t count = item.deck->made ? item.deck->made->size() : item.deck->pages.size();
        return detail + " · " + QString::number(count) + (count == 1 ? " slide" : " slides");
    }
    if (item.duration && *item.duration > 0) detail += " · " + durationText(*item.duration);
    return detail;
}

// The picture that stands for an item, and every file it needs.
std::pair<std::string, std::vector<std::string>> filesOf(const MediaItem& item) {
    if (item.ndiSource) return {};
    if (item.deck) {
        // A deck of made slides not drawn yet has no page to miss.
        if (item.deck->pages.empty()) return {};
        return {item.deck->pages.front(), item.deck->pages};
    }
    return {item.fileName, {item.fileName}};
}

} // namespace

QString durationText(double seconds) {
    const long total = long(seconds + 0.5);
    const long hours = total / 3600, minutes = total / 60 % 60, rest = total % 60;
    const QString tail = QString("%1:%2").arg(minutes, hours > 0 ? 2 : 1, 10, QChar('0')).arg(rest, 2, 10, QChar('0'));
    return hours > 0 ? QString::number(hours) + ":" + tail : tail;
}

LibraryModel::LibraryModel(AppModel& model, LibraryPictures& pictures) : model_(model), pictures_(pictures) {}

bool LibraryModel::update() {
    const auto& show = model_.show();
    const std::optional<Uuid> showID = show ? std::optional<Uuid>(show->id) : std::nullopt;
    const std::filesystem::path package = model_.package() ? model_.package()->url() : std::filesystem::path();
    if (showID != showID_ || package != package_) {
        // Another show: its caches were emptied on load, and what was asked
        // for the old one is no use.
        showID_ = showID;
        package_ = package;
        pictures_.forget();
        requested_.clear();
        answered_.clear();
        missing_.clear();
        hasLibrary_ = false;
    }
    if (show && hasLibrary_ && &show->library.sharedItems() == &library_.sharedItems()) return false;
    beginResetModel();
    hasLibrary_ = show.has_value();
    library_ = show ? show->library : SharedList<MediaItem>{};
    rebuild();
    endResetModel();
    requestPictures();
    return true;
}

void LibraryModel::rebuild() {
    rows_.clear();
    rowOfItem_.clear();
    rowsOfKey_.clear();
    rows_.reserve(library_.size());
    for (const MediaItem& item : library_) {
        Row row{item.id, item.kind, qt(item.name), detailOf(item), filesOf(item).first,
                item.kind == MediaKind::audio || item.kind == MediaKind::video};
        rowOfItem_[item.id] = int(rows_.size());
        if (!row.key.empty()) rowsOfKey_[row.key].push_back(int(rows_.size()));
        rows_.push_back(std::move(row));
    }
}

void LibraryModel::requestPictures() {
    if (!model_.package()) return;
    const ShowPackage& package = *model_.package();
    for (const MediaItem& item : library_) {
        auto [key, names] = filesOf(item);
        if (key.empty() || !requested_.insert(key).second) continue;
        LibraryPictures::Request request;
        request.key = key;
        for (const std::string& name : names) request.files.push_back(package.mediaURL(name));
        request.look = item.kind == MediaKind::audio   ? LibraryPictures::Look::waveform
                       : item.kind == MediaKind::video ? LibraryPictures::Look::poster
                                                       : LibraryPictures::Look::picture;
        request.posterSeconds = item.posterSeconds.value_or(0);
        request.fit = thumbnailSize * 2; // sharp on a high-density screen
        pictures_.request(std::move(request), [this](LibraryPictures::Answer answer) {
            answered(answer.key, answer.isMissing, std::move(answer.picture), std::move(answer.peaks));
        });
    }
}

void LibraryModel::answered(const std::string& key, bool isMissing, std::optional<StillImage> picture,
                            std::vector<float> peaks) {
    answered_.insert(key);
    if (isMissing) missing_.insert(key);
    else missing_.erase(key);
    PictureCaches& caches = model_.caches();
    if (picture) caches.thumbnails.insert_or_assign(key, *picture);
    if (!peaks.empty()) caches.waveforms.insert_or_assign(key, std::move(peaks));
    const auto rows = rowsOfKey_.find(key);
    if (rows == rowsOfKey_.end()) return;
    for (const int row : rows->second) emit dataChanged(index(row), index(row));
}

QModelIndex LibraryModel::indexOfItem(const Uuid& itemID) const {
    const auto found = rowOfItem_.find(itemID);
    return found == rowOfItem_.end() ? QModelIndex() : index(found->second);
}

std::optional<Uuid> LibraryModel::itemAt(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= int(rows_.size())) return std::nullopt;
    return rows_[std::size_t(index.row())].id;
}

const StillImage* LibraryModel::picture(const Row& row) const {
    const auto& thumbnails = model_.caches().thumbnails;
    const auto found = row.key.empty() ? thumbnails.end() : thumbnails.find(row.key);
    return found == thumbnails.end() ? nullptr : &found->second;
}

const std::vector<float>* LibraryModel::peaks(const Row& row) const {
    const auto& waveforms = model_.caches().waveforms;
    const auto found = row.key.empty() ? waveforms.end() : waveforms.find(row.key);
    return found == waveforms.end() ? nullptr : &found->second;
}

int LibraryModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(rows_.size()); }

QVariant LibraryModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= int(rows_.size())) return {};
    const Row& row = rows_[std::size_t(index.row())];
    switch (role) {
    case Qt::DisplayRole: return row.name;
    case Qt::ToolTipRole: return isMissing(row) ? row.name + " — missing" : row.name + "\n" + row.detail;
    default: return {};
    }
}

Qt::ItemFlags LibraryModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
}

QStringList LibraryModel::mimeTypes() const { return {RunOfShowModel::mediaMimeType, QStringLiteral("text/uri-list")}; }

QMimeData* LibraryModel::mimeData(const QModelIndexList& indexes) const {
    QStringList ids;
    for (const QModelIndex& index : indexes)
        if (const auto id = itemAt(index)) ids << qt(id->text());
    if (ids.isEmpty()) return nullptr;
    auto* data = new QMimeData;
    data->setData(RunOfShowModel::mediaMimeType, ids.join('\n').toUtf8());
    return data;
}

bool LibraryModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int, const QModelIndex&) const {
    // Only files from outside: the library has no order to drag items into.
    return data->hasUrls() && !data->hasFormat(RunOfShowModel::mediaMimeType);
}

bool LibraryModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent)) return false;
    std::vector<std::filesystem::path> files;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile()) files.emplace_back(url.toLocalFile().toStdString());
    if (files.empty()) return false;
    model_.importFiles(files, false);
    return true;
}

} // namespace velarion::console
