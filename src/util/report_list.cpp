#include "util/report_list.h"

#include "util/twips.h"

#include <QHeaderView>

namespace {

// Rows compare as text, without regard to case, in every column, the number columns included.
class TextRow : public QTreeWidgetItem {
public:
    using QTreeWidgetItem::QTreeWidgetItem;
    bool operator<(const QTreeWidgetItem& other) const override {
        const int column = treeWidget() ? treeWidget()->sortColumn() : 0;
        return text(column).compare(other.text(column), Qt::CaseInsensitive) < 0;
    }
};

}  // namespace

ReportList::ReportList(const QString& name, QWidget* parent) : QTreeWidget(parent) {
    setObjectName(name);
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
    setColumnCount(int(columns.size()));
    setHeaderLabels(captions);
    for (int c = 0; c < int(columns.size()); ++c) {
        setColumnWidth(c, hundredthsOfMmToPixels(columns[size_t(c)].second));
    }
}

int ReportList::addRow(const QString& text, const QVariant& tag) {
    addTopLevelItem(newRow(QStringList{text}, tag));
    return rowCount() - 1;
}

QTreeWidgetItem* ReportList::newRow(const QStringList& cells, const QVariant& tag) {
    auto* row = new TextRow(cells);
    row->setData(0, Qt::UserRole, tag);
    row->setData(0, Qt::UserRole + 1, int(cells.size()));  // the cells it has
    return row;
}

void ReportList::addRows(const QList<QTreeWidgetItem*>& rows) {
    if (rows.isEmpty()) {
        return;
    }
    const bool updating = updatesEnabled();
    setUpdatesEnabled(false);
    addTopLevelItems(rows);
    setUpdatesEnabled(updating);
}

void ReportList::addCell(int row, const QString& text) {
    QTreeWidgetItem* item = topLevelItem(row);
    const int cells = item->data(0, Qt::UserRole + 1).toInt();
    item->setText(cells, text);
    item->setData(0, Qt::UserRole + 1, cells + 1);
}

int ReportList::cellCount(int row) const {
    return topLevelItem(row)->data(0, Qt::UserRole + 1).toInt();
}

QString ReportList::cell(int row, int column) const {
    return topLevelItem(row)->text(column);
}

void ReportList::setCell(int row, int column, const QString& text) {
    topLevelItem(row)->setText(column, text);
}

QVariant ReportList::tag(int row) const {
    return topLevelItem(row)->data(0, Qt::UserRole);
}

void ReportList::selectRow(int row) {
    QTreeWidgetItem* item = topLevelItem(row);
    setCurrentItem(item);
    item->setSelected(true);
}

std::optional<int> ReportList::selectedRow() const {
    const QList<QTreeWidgetItem*> selected = selectedItems();
    if (selected.isEmpty()) {
        return std::nullopt;
    }
    return indexOfTopLevelItem(selected.first());
}

void ReportList::removeRow(int row) {
    delete takeTopLevelItem(row);
    // Which row is selected next is the list's own choice; the commands rely on there being one.
    if (rowCount() > 0 && !selectedRow()) {
        selectRow(currentItem() ? indexOfTopLevelItem(currentItem())
                                : std::min(row, rowCount() - 1));
    }
}

void ReportList::removeAllRows() {
    clear();
}

void ReportList::sortByColumn(int column, int order) {
    sortColumn_ = column;
    sortOrder_ = order;
    sortItems(column, order == 1 ? Qt::DescendingOrder : Qt::AscendingOrder);
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
    QTreeWidget::selectionChanged(selected, deselected);
    // A click below the rows, Ctrl+click or Ctrl+Space would leave no row selected: the row that
    // lost the selection keeps it.
    if (rowCount() == 0 || !selectedItems().isEmpty() || deselected.isEmpty()) {
        return;
    }
    const QModelIndex lost = deselected.indexes().constFirst();
    selectRow(lost.isValid() ? std::min(lost.row(), rowCount() - 1) : 0);
}

void ReportList::mouseDoubleClickEvent(QMouseEvent* event) {
    QTreeWidget::mouseDoubleClickEvent(event);
    if (onDoubleClick) {
        onDoubleClick();
    }
}
