#include "util/flex_grid.h"

#include "platform/convert.h"
#include "platform/rt_error.h"
#include "util/twips.h"

#include <QHeaderView>

#include <algorithm>
#include <vector>

namespace {

// The grid's own failure for a cell it does not have; the runtime's 9 is another number.
rt::Error cellOutOfRange() {
    return rt::Error(381, QStringLiteral("Subscript out of range"));
}

struct RowTexts {
    double key;
    QStringList texts;
};

}  // namespace

FlexGrid::FlexGrid(QWidget* parent) : QTableWidget(parent) {
    verticalHeader()->hide();
    horizontalHeader()->setSectionsClickable(false);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    // A new grid has the heading row and one row, in two columns, until the caller sizes it.
    Rows(2);
    Cols(2);
}

int FlexGrid::Rows() const {
    return rowCount() + 1;
}

void FlexGrid::Rows(int nRows) {
    if (nRows < 1) {
        throw rt::Error::standard(rt::InvalidPropertyValue);
    }
    setRowCount(nRows - 1);
}

int FlexGrid::Cols() const {
    return columnCount();
}

void FlexGrid::Cols(int nCols) {
    if (nCols < 0) {
        throw rt::Error::standard(rt::InvalidPropertyValue);
    }
    const int before = columnCount();
    setColumnCount(nCols);
    // Without an item of its own a heading shows its column's number.
    for (int c = before; c < nCols; ++c) {
        setHorizontalHeaderItem(c, new QTableWidgetItem());
    }
}

int FlexGrid::RowHeight(int row) const {
    checkRow(row);
    return pixelsToTwips(row == 0 ? horizontalHeader()->height() : rowHeight(row - 1));
}

void FlexGrid::RowHeight(int row, int twips) {
    checkRow(row);
    if (row == 0) {
        horizontalHeader()->setFixedHeight(twipsToPixels(twips));
    } else {
        setRowHeight(row - 1, twipsToPixels(twips));
    }
}

QString FlexGrid::TextMatrix(int row, int col) const {
    checkCell(row, col);
    const QTableWidgetItem* cell = row == 0 ? horizontalHeaderItem(col) : item(row - 1, col);
    return cell ? cell->text() : QString();
}

void FlexGrid::TextMatrix(int row, int col, const QString& text) {
    checkCell(row, col);
    if (QTableWidgetItem* cell = row == 0 ? horizontalHeaderItem(col) : item(row - 1, col)) {
        cell->setText(text);
    } else if (row == 0) {
        setHorizontalHeaderItem(col, new QTableWidgetItem(text));
    } else {
        setItem(row - 1, col, new QTableWidgetItem(text));
    }
}

void FlexGrid::Sort(int order) {
    if (order != kSortNumericAscending) {
        throw rt::Error::standard(rt::InvalidPropertyValue);
    }
    std::vector<RowTexts> rows;
    for (int r = 1; r < Rows(); ++r) {
        RowTexts row{rt::Val(TextMatrix(r, col_)), {}};
        for (int c = 0; c < Cols(); ++c) {
            row.texts << TextMatrix(r, c);
        }
        rows.push_back(std::move(row));
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const RowTexts& a, const RowTexts& b) { return a.key < b.key; });
    for (int r = 1; r < Rows(); ++r) {
        for (int c = 0; c < Cols(); ++c) {
            TextMatrix(r, c, rows[size_t(r - 1)].texts[c]);
        }
    }
}

void FlexGrid::checkRow(int row) const {
    if (row < 0 || row >= Rows()) {
        throw cellOutOfRange();
    }
}

void FlexGrid::checkCell(int row, int col) const {
    checkRow(row);
    if (col < 0 || col >= Cols()) {
        throw cellOutOfRange();
    }
}
