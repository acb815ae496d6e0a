#include "util/report_list.h"

#include "util/twips.h"

#include <QAbstractTableModel>
#include <QHeaderView>

#include <algorithm>
#include <numeric>

// The rows themselves, as plain text: a list of ten thousand employees costs a string list each,
// and a fill tells the view once.
class ReportListModel : public QAbstractTableModel {
public:
    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : int(rows.size());
    }
    int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : int(captions.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole || !index.isValid()) {
            return {};
        }
        const QStringList& cells = rows[index.row()].cells;
        return index.column() < cells.size() ? QVariant(cells[index.column()]) : QVariant();
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
            section < captions.size()) {
            return captions[section];
        }
        return QAbstractTableModel::headerData(section, orientation, role);
    }

    void setCaptions(const QStringList& columns) {
        beginResetModel();
        captions = columns;
        endResetModel();
    }
    void append(QList<ReportList::Row>&& added) {
        if (added.isEmpty()) {
            return;
        }
        beginInsertRows({}, int(rows.size()), int(rows.size() + added.size()) - 1);
        if (rows.isEmpty()) {
            rows = std::move(added);
        } else {
            rows.append(std::move(added));
        }
        endInsertRows();
    }
    void changeCell(int row, int column, const QString& text) {
        QStringList& cells = rows[row].cells;
        while (cells.size() <= column) {
            cells.append(QString());
        }
        cells[column] = text;
        emit dataChanged(index(row, column), index(row, column));
    }
    void remove(int row) {
        beginRemoveRows({}, row, row);
        rows.removeAt(row);
        endRemoveRows();
    }
    void removeAll() {
        beginResetModel();
        rows = {};
        endResetModel();
    }
    // As text without regard to case, a missing cell as an empty one; rows that compare equal
    // keep their order. The selection stays on the rows it was on.
    void sortBy(int column, Qt::SortOrder order) {
        emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
        std::vector<int> ranks(size_t(rows.size()));
        std::iota(ranks.begin(), ranks.end(), 0);
        const auto text = [&](int row) {
            const QStringList& cells = rows[row].cells;
            return column < cells.size() ? cells[column] : QString();
        };
        std::stable_sort(ranks.begin(), ranks.end(), [&](int a, int b) {
            const int compared = text(a).compare(text(b), Qt::CaseInsensitive);
            return order == Qt::AscendingOrder ? compared < 0 : compared > 0;
        });
        QList<ReportList::Row> sorted;
        sorted.reserve(rows.size());
        std::vector<int> newRowOf(ranks.size());
        for (size_t i = 0; i < ranks.size(); ++i) {
            sorted.append(std::move(rows[ranks[i]]));
            newRowOf[size_t(ranks[i])] = int(i);
        }
        rows = std::move(sorted);
        const QModelIndexList before = persistentIndexList();
        QModelIndexList after;
        after.reserve(before.size());
        for (const QModelIndex& index : before) {
            after.append(this->index(newRowOf[size_t(index.row())], index.column()));
        }
        changePersistentIndexList(before, after);
        emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
    }

    QStringList captions;
    QList<ReportList::Row> rows;
};

ReportList::ReportList(const QString& name, QWidget* parent)
    : QTreeView(parent), rows_(new ReportListModel(this)) {
    setObjectName(name);
    setModel(rows_);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAllColumnsShowFocus(true);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    header()->setSectionsClickable(true);
    header()->setSectionsMovable(false);
    header()->setStretchLastSection(false);
    connect(header(), &QHeaderView::sectionClicked, this, [this](int column) {
        if (onColumnClick) {
            onColumnClick(column);
        }
    });
}

void ReportList::setColumns(const std::vector<std::pair<QString, int>>& columns) {
    QStringList captions;
    for (const auto& column : columns) {
        captions << column.first;
    }
    rows_->setCaptions(captions);
    for (int c = 0; c < int(columns.size()); ++c) {
        setColumnWidth(c, hundredthsOfMmToPixels(columns[size_t(c)].second));
    }
}

QString ReportList::caption(int column) const {
    return rows_->captions.value(column);
}

int ReportList::addRow(const QString& text, const QVariant& tag) {
    addRows({Row{QStringList{text}, tag}});
    return rowCount() - 1;
}

void ReportList::addRows(QList<Row> rows) {
    rows_->append(std::move(rows));
}

void ReportList::addCell(int row, const QString& text) {
    rows_->changeCell(row, cellCount(row), text);
}

int ReportList::cellCount(int row) const {
    return int(rows_->rows.at(row).cells.size());
}

QString ReportList::cell(int row, int column) const {
    return rows_->rows.at(row).cells.value(column);
}

void ReportList::setCell(int row, int column, const QString& text) {
    rows_->changeCell(row, column, text);
}

QVariant ReportList::tag(int row) const {
    return rows_->rows.at(row).tag;
}

int ReportList::rowCount() const {
    return rows_->rowCount();
}

void ReportList::selectRow(int row) {
    const QModelIndex index = rows_->index(row, 0);
    setCurrentIndex(index);
    selectionModel()->select(index,
                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

std::optional<int> ReportList::selectedRow() const {
    const QModelIndexList selected = selectionModel()->selectedRows();
    if (selected.isEmpty()) {
        return std::nullopt;
    }
    return selected.first().row();
}

QRect ReportList::rowRect(int row) const {
    return visualRect(rows_->index(row, 0));
}

void ReportList::removeRow(int row) {
    rows_->remove(row);
    // Which row is selected next is the list's own choice; the commands rely on there being one.
    if (rowCount() > 0 && !selectedRow()) {
        selectRow(currentIndex().isValid() ? currentIndex().row() : std::min(row, rowCount() - 1));
    }
}

void ReportList::removeAllRows() {
    rows_->removeAll();
}

void ReportList::sortByColumn(int column, int order) {
    sortColumn_ = column;
    sortOrder_ = order;
    const Qt::SortOrder direction = order == 1 ? Qt::DescendingOrder : Qt::AscendingOrder;
    rows_->sortBy(column, direction);
    header()->setSortIndicator(column, direction);
    header()->setSortIndicatorShown(true);
}

void ReportList::finishFill() {
    if (isSorted()) {
        sortByColumn(sortColumn_, sortOrder_);
    }
    if (rowCount() > 0) {
        selectRow(0);
    }
}

void ReportList::selectionChanged(const QItemSelection& selected,
                                  const QItemSelection& deselected) {
    QTreeView::selectionChanged(selected, deselected);
    // A click below the rows, Ctrl+click or Ctrl+Space would leave no row selected: the row that
    // lost the selection keeps it.
    if (rowCount() == 0 || selectionModel()->hasSelection() || deselected.isEmpty()) {
        return;
    }
    const QModelIndex lost = deselected.indexes().constFirst();
    selectRow(lost.isValid() ? std::min(lost.row(), rowCount() - 1) : 0);
}

void ReportList::mouseDoubleClickEvent(QMouseEvent* event) {
    QTreeView::mouseDoubleClickEvent(event);
    if (onDoubleClick) {
        onDoubleClick();
    }
}
