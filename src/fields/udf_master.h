#pragma once

#include "platform/array.h"
#include "platform/variant.h"

#include <QObject>
#include <QString>

#include <array>
#include <functional>

class FlexGrid;
class RecSet;

// An array declared from 1: index 0 is outside it as much as one past its end, and either raises
// 9 "Subscript out of range". Unallocated until the first ReDim.
template <typename T>
class ArrayFrom1 {
public:
    T& operator()(int index) { return items_(index - 1); }
    const T& operator()(int index) const { return items_(index - 1); }
    // ReDim Preserve to elements 1 to `upperBound`.
    void redimPreserve(int upperBound) { items_.redimPreserve(upperBound - 1); }

private:
    rt::Array<T> items_;
};

// One user field: its definition from udfs and its display position for the user.
struct UDFDefinition {
    QString col;
    QString desc;
    qint16 nType = 0;
    qint16 nClass = 0;
    qint32 lUser = 0;
    qint16 decimals = 0;
    // Choice1 to Choice24 at 0 to 23; the last element is never filled.
    std::array<QString, 25> Choices;
    qint16 nOrder = 0;
};

// The fields of one data table that one user sees, in the order the database gave them.
struct UDFParentList {
    QString sParent;
    ArrayFrom1<UDFDefinition> Entries;
    // Rules over the size of Entries, which may hold stale elements beyond it.
    qint16 nCount = 0;
    qint32 lUser = 0;
};

// The field record handed between the callers and the editing operations.
extern UDFDefinition gCurrentUDF;

// The catalogue of the user fields: one list of definitions per data table and user, read from
// udfs, with the operations that add, change and remove a field and keep each user's display
// order of the fields in the options table. It is no widget, so the two labels "UDF" and
// "Master" that marked it on a form have no counterpart.
//
// Grids passed in are the caller's; one filled here has the column name in column 0, the
// display position in column 1 and the label in column 2, sorted by position. A grid may be
// nullptr wherever the operation does not fill it.
class UDFMaster : public QObject {
    Q_OBJECT

public:
    explicit UDFMaster(QObject* parent = nullptr);

    // Every table's list for the logged-on user from one read of udfs, into UDFMaster1().
    void LoadAllUDFs();
    // Registers the list when asked or when it is new, then fills the grid in display order.
    // `InitGrid` has no effect; `rsOR` serves instead of a query when `bOverRideRS` is set.
    void FillUDFList(const QString& sParentTable, qint32 lUser, bool ReRegister, bool IncludeGrid,
                     bool InitGrid, FlexGrid* g, bool bOverRideRS, RecSet* rsOR);
    // Reads the list anew into position `nPos`, or into a new list when it is 0, and gives the
    // position back. Raises UDFChange before it returns.
    void RegisterUDFControl(const QString& sParentTable, qint16& nPos, qint32 lUser,
                            bool bOverRideRS, RecSet* rsOR);
    // The list of that table (compared case-sensitively) and user, 0 when there is none.
    qint16 FindUDFPos(const QString& table, qint32 lUser) const;
    // The entry of that column in the list, 0 when there is none.
    qint16 FindRowPos(qint16 nIndex, const QString& column) const;
    qint16 GetNumUDFs(const QString& sTable, qint32 lUser) const;

    // Defines gCurrentUDF on the free column `sAvailableCol`. The new field comes last in the
    // order whatever position gCurrentUDF.nOrder asks for; the fields from there on move up.
    void AddUDF(const QString& sTable, FlexGrid* g, const QString& sAvailableCol);
    // Writes gCurrentUDF to its row of udfs and moves the field to gCurrentUDF.nOrder; with
    // `NewOne`, adds it as AddUDF tells. An existing field keeps its type and its stored class.
    void EditUDF(const QString& sTable, const QString& sRow, FlexGrid* g, bool NewOne);
    // Removes the field in row `therow` of the grid and wipes its values in every record. Any
    // failure is shown as a lock held by another process.
    void DeleteUDF(const QString& sTable, qint16 therow, FlexGrid* g, qint16 nClass, qint32 lUser);

    // Copies the field of column `sRow` to gCurrentUDF.
    void FillMyUDF(const QString& sTable, const QString& sRow, qint32 lUser);
    // Copies entry `row` of the list out; `Choices` must already reach index 23. True.
    rt::Variant FillUDF(const QString& sTable, qint32 lUserLookup, qint16 row, QString& col,
                        QString& desc, qint16& nType, qint16& decimals, rt::Array<QString>& Choices,
                        qint16& nClass, qint32& lUserOut);

    // Reads the logged-on user's stored order of the table into the entries of list `nIndex`.
    void GetOrder(qint16 nIndex, const QString& sParent);
    // Stores the entries' positions as they stand, without entry `nDeleteRow`, and with one more
    // for a field that `bNew` says is being added.
    void SaveOrder(qint16 nIndex, const QString& sParent, bool bNew, qint16 nDeleteRow);

signals:
    // The list of that data table was read anew.
    void UDFChange(const QString& sParentTable);

private:
    UDFDefinition& entry(qint16 nIndex, int i) { return UDFLists(nIndex).Entries(i); }
    // Adds `delta` to the position of each entry of the list whose position `moves` picks.
    void shiftOrders(qint16 nIndex, int delta, const std::function<bool(qint16 nOrder)>& moves);

    ArrayFrom1<UDFParentList> UDFLists;
    qint16 nLists = 0;
};

// The one instance the suite's windows share, made on first use and owned by frmConfig.
UDFMaster& UDFMaster1();
