#pragma once

#include <QTableWidget>

// A grid of text cells addressed by row and column, as the suite's shared controls fill it. Row
// 0 is the fixed heading row and stands in the table's own heading, so that it stays in view;
// rows 1 and on are the table's rows. Sizes are in twips.
class FlexGrid : public QTableWidget {
public:
    // The only sort order the callers ask for.
    static constexpr int kSortNumericAscending = 3;

    explicit FlexGrid(QWidget* parent = nullptr);

    // All rows, the heading row included; fewer than 1 is refused.
    int Rows() const;
    void Rows(int nRows);
    int Cols() const;
    void Cols(int nCols);
    int RowHeight(int row) const;
    void RowHeight(int row, int twips);
    // A cell outside the grid raises 381 "Subscript out of range".
    QString TextMatrix(int row, int col) const;
    void TextMatrix(int row, int col, const QString& text);
    // The current column and the far end of the column selection.
    int Col() const { return col_; }
    void Col(int col) { col_ = col; }
    int ColSel() const { return colSel_; }
    void ColSel(int col) { colSel_ = col; }
    // Orders the rows below the heading by the number at the start of their cell in column Col;
    // rows of equal numbers keep their order. Another order raises 380.
    void Sort(int order);

private:
    void checkRow(int row) const;
    void checkCell(int row, int col) const;

    int col_ = 0;
    int colSel_ = 0;
};
