#pragma once

#include <QStringList>
#include <QTreeView>

#include <functional>
#include <optional>

class ReportListModel;

// A list of rows in columns, as the console's lists are: each row has a text, cells behind it in
// column order, and a tag that leads back to its record. A click on a column head is the
// caller's to handle; once the list has been sorted it stays sorted by that column and order
// whenever it is filled again, while a row added later goes at the end. Once filled, a list with
// rows always has a selected row, whatever the mouse or keyboard does: the commands act on it.
class ReportList : public QTreeView {
public:
    // Its text and then its cells in column order, and its tag.
    struct Row {
        QStringList cells;
        QVariant tag;
    };

    ReportList(const QString& name, QWidget* parent = nullptr);

    // Columns by caption and width in hundredths of a millimetre.
    void setColumns(const std::vector<std::pair<QString, int>>& columns);
    QString caption(int column) const;

    // Adds a row at the end with its text and tag; gives its index.
    int addRow(const QString& text, const QVariant& tag);
    // Adds rows made whole at the end in their order, with one notice to the view for all.
    void addRows(QList<Row> rows);
    // Appends a cell to the row, behind the ones it has.
    void addCell(int row, const QString& text);
    int cellCount(int row) const;
    QString cell(int row, int column) const;
    void setCell(int row, int column, const QString& text);
    QVariant tag(int row) const;
    int rowCount() const;
    void selectRow(int row);
    // The selected row, or nothing when none is.
    std::optional<int> selectedRow() const;
    QRect rowRect(int row) const;
    void removeRow(int row);
    void removeAllRows();

    // Sorts by that column, as text, ascending (0) or descending (1), and keeps doing so after
    // each fill.
    void sortByColumn(int column, int order);
    bool isSorted() const { return sortColumn_ >= 0; }
    // After a fill: the kept sort, then the first row selected.
    void finishFill();

    // Where the lists read a double-click: anywhere in them, rows or not.
    std::function<void()> onDoubleClick;
    std::function<void(int column)> onColumnClick;

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;

private:
    ReportListModel* rows_;
    int sortColumn_ = -1;
    int sortOrder_ = 0;
};
