#include "fields/udf_master.h"

#include "data/dbase.h"
#include "data/session.h"
#include "platform/convert.h"
#include "platform/rt_error.h"
#include "platform/ui.h"
#include "settings/options.h"
#include "util/flex_grid.h"
#include "util/frm_config.h"
#include "util/product.h"
#include "util/value_helpers.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <utility>

UDFDefinition gCurrentUDF;

namespace {

constexpr int kChoices = 24;
constexpr int kGridRowHeight = 300;
constexpr qint16 kPersonal = 2;
const QString kOrderSection = QStringLiteral("UDFOrder");

// The order in which LoadAllUDFs fills the lists; each list's position follows from it.
const QString kLoadOrder[] = {QStringLiteral("clntudf"), QStringLiteral("clntudf2"),
                              QStringLiteral("projudf"), QStringLiteral("listudf"),
                              QStringLiteral("acctudf"), QStringLiteral("produdf")};

// A count or position in 16 bits, overflowing as the runtime's Integer does.
qint16 int16(int value) {
    return rt::CInt(rt::Variant(value));
}

RecSet& cursorOf(RecSet* rs) {
    if (!rs) {
        throw rt::Error::standard(rt::ObjectNotSet);
    }
    return *rs;
}

FlexGrid& gridOf(FlexGrid* g) {
    if (!g) {
        throw rt::Error::standard(rt::ObjectNotSet);
    }
    return *g;
}

// The options column of the table's order; 0 for a table that has none.
qint16 orderTag(const QString& sParent) {
    const std::pair<QString, qint16> tags[] = {{"clntudf", 1}, {"clntudf2", 2}, {"projudf", 3},
                                               {"produdf", 4}, {"listudf", 5},  {"acctudf", 6}};
    for (const auto& [table, tag] : tags) {
        if (table == sParent) {
            return tag;
        }
    }
    return 0;
}

void readEntry(RecSet& rs, UDFDefinition& e) {
    e.col = rt::CStr(rs.Cols("Col"));
    e.desc = rt::CStr(rs.Cols("Descrpn"));
    e.nType = rt::CInt(rs.Cols("Type"));
    e.decimals = rt::CInt(rs.Cols("Decimals"));
    e.nClass = rt::CInt(rs.Cols("Class"));
    e.lUser = rt::CLng(rs.Cols("userid"));
    for (int k = 0; k < kChoices; ++k) {
        e.Choices[size_t(k)] = rt::CStr(rs.Cols("Choice" + QString::number(k + 1)));
    }
}

// A personal field is removed for its owner only; any other is blanked for everybody, which
// leaves its row free for the next field on that column.
QString removalStatement(const QString& sTable, const QString& sCol, qint16 nClass, qint32 lUser) {
    const QString where = " WHERE parent = '" + sTable + "' And " + "col = '" + sCol + "'";
    if (nClass == kPersonal) {
        return "DELETE FROM udfs " + where + " AND userid = " + QString::number(lUser);
    }
    return "UPDATE udfs SET descrpn = ''" + where;
}

void writeDefinition(const QString& sTable, bool NewOne) {
    // The key is gCurrentUDF's and is not escaped: a quote in it breaks the statement.
    auto rs = gDBase.OpenRecordset("SELECT * FROM udfs WHERE" + QStringLiteral(" parent = '") +
                                   sTable + "' And " + "col = '" + gCurrentUDF.col + "'" +
                                   " AND userid = " + QString::number(gCurrentUDF.lUser));
    if (!NewOne) {
        rs->MoveFirst();
        rs->Edit();
    } else {
        // A removed field left its row behind with an empty label; the new one takes it over.
        if (rs->RecordCount() > 0) {
            rs->MoveFirst();
            rs->Edit();
        } else {
            rs->AddNew();
        }
        rs->Cols("col") = gCurrentUDF.col;
        rs->Cols("Type") = gCurrentUDF.nType;
        rs->Cols("Class") = gCurrentUDF.nClass;
        rs->Cols("UserID") = gCurrentUDF.lUser;
        rs->Cols("Parent") = sTable;
    }
    rs->Cols("Descrpn") = gCurrentUDF.desc;
    rs->Cols("decimals") = gCurrentUDF.decimals;
    for (int k = 0; k < kChoices; ++k) {
        rs->Cols("choice" + QString::number(k + 1)) = gCurrentUDF.Choices[size_t(k)];
    }
    rs->Update();
    rs->CloseRS();
}

}  // namespace

UDFMaster::UDFMaster(QObject* parent) : QObject(parent) {}

void UDFMaster::LoadAllUDFs() {
    const QString user = QString::number(gUsers(0).id);
    auto rs = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM udfs ") + " WHERE Descrpn <> ''" +
                                   " AND (Class IN(0,1) OR (Class = 2 AND userid = " + user + "))");
    // The lists go to the shared instance, whichever instance was asked: that is the one the
    // suite's windows read.
    for (const QString& table : kLoadOrder) {
        UDFMaster1().FillUDFList(table, gUsers(0).id, true, false, false, nullptr, true, rs.get());
    }
    rs->CloseRS();
}

void UDFMaster::FillUDFList(const QString& sParentTable, qint32 lUser, bool ReRegister,
                            bool IncludeGrid, bool InitGrid, FlexGrid* g, bool bOverRideRS,
                            RecSet* rsOR) {
    ShowBusy();
    qint16 nPos = FindUDFPos(sParentTable, lUser);
    if (ReRegister || nPos == 0) {
        RegisterUDFControl(sParentTable, nPos, lUser, bOverRideRS, rsOR);
        nPos = FindUDFPos(sParentTable, lUser);
    }
    if (IncludeGrid) {
        GetOrder(nPos, sParentTable);
        FlexGrid& grid = gridOf(g);
        const UDFParentList& list = UDFLists(nPos);
        grid.Rows(list.nCount + 1);
        for (int i = 1; i <= list.nCount; ++i) {
            const UDFDefinition& e = list.Entries(i);
            grid.RowHeight(i, kGridRowHeight);
            grid.TextMatrix(i, 2, e.desc);
            grid.TextMatrix(i, 0, e.col);
            grid.TextMatrix(i, 1, QString::number(e.nOrder));
        }
        // The grid shows the display order while the list keeps the database's: a grid row
        // leads to its entry by the column name, never by its number.
        grid.Col(1);
        grid.ColSel(1);
        grid.Sort(FlexGrid::kSortNumericAscending);
    }
    ShowIdle();
}

void UDFMaster::RegisterUDFControl(const QString& sParentTable, qint16& nPos, qint32 lUser,
                                   bool bOverRideRS, RecSet* rsOR) {
    if (nPos == 0) {
        nLists = int16(nLists + 1);
        UDFLists.redimPreserve(nLists);
        UDFLists(nLists).sParent = sParentTable;
        nPos = nLists;
    }
    std::unique_ptr<RecSet> own;
    if (!bOverRideRS) {
        own = gDBase.OpenRecordset(
            QStringLiteral("SELECT * FROM udfs ") + " WHERE Descrpn <> '' AND parent = '" +
            sParentTable +
            "' AND (Class IN(0,1) OR (Class = 2 AND userid = " + QString::number(lUser) + "))");
    }
    RecSet& rs = bOverRideRS ? cursorOf(rsOR) : *own;
    qint16 count = int16(rs.RecordCount());
    if (count > 0) {
        rs.MoveLast();
        count = int16(rs.RecordCount());
    }
    UDFParentList& list = UDFLists(nPos);
    list.lUser = lUser;
    // Entries keeps its elements until the first match resizes it; the count alone says which
    // are valid.
    list.nCount = 0;
    if (count >= 1) {
        rs.MoveFirst();
        for (int i = 1; i <= count; ++i) {
            if (i > 1) {
                rs.MoveNext();
            }
            // A cursor handed in holds the rows of every table.
            if (rt::CStr(rs.Cols("Parent")).toUpper() != sParentTable.toUpper()) {
                continue;
            }
            ++list.nCount;
            list.Entries.redimPreserve(list.nCount);
            readEntry(rs, list.Entries(list.nCount));
        }
    }
    // A cursor handed in is the caller's, left where the scan ended.
    if (!bOverRideRS) {
        rs.CloseRS();
    }
    emit UDFChange(sParentTable);
}

qint16 UDFMaster::FindUDFPos(const QString& table, qint32 lUser) const {
    for (int i = 1; i <= nLists; ++i) {
        const UDFParentList& list = UDFLists(i);
        if (list.sParent == table && list.lUser == lUser) {
            return qint16(i);
        }
    }
    return 0;
}

qint16 UDFMaster::FindRowPos(qint16 nIndex, const QString& column) const {
    const UDFParentList& list = UDFLists(nIndex);
    for (int i = 1; i <= list.nCount; ++i) {
        if (list.Entries(i).col == column) {
            return qint16(i);
        }
    }
    return 0;
}

qint16 UDFMaster::GetNumUDFs(const QString& sTable, qint32 lUser) const {
    return UDFLists(FindUDFPos(sTable, lUser)).nCount;
}

void UDFMaster::AddUDF(const QString& sTable, FlexGrid* g, const QString& sAvailableCol) {
    ShowBusy();
    // Reaches the session's user before gCurrentUDF is touched.
    FindUDFPos(sTable, gUsers(0).id);
    gCurrentUDF.col = sAvailableCol;
    EditUDF(sTable, sAvailableCol, g, true);
}

void UDFMaster::EditUDF(const QString& sTable, const QString& sRow, FlexGrid* g, bool NewOne) {
    const qint16 nPos = FindUDFPos(sTable, gUsers(0).id);
    const qint16 nRow = FindRowPos(nPos, sRow);
    ShowBusy();
    if (NewOne) {
        // The others make room at the position asked for, but the new field is given the
        // position after the last.
        const qint16 T = gCurrentUDF.nOrder;
        shiftOrders(nPos, 1, [T](qint16 nOrder) { return nOrder >= T; });
        SaveOrder(nPos, sTable, true, -1);
    } else {
        UDFDefinition& e = entry(nPos, nRow);
        e.desc = gCurrentUDF.desc;
        e.decimals = gCurrentUDF.decimals;
        e.nClass = gCurrentUDF.nClass;
        e.lUser = gCurrentUDF.lUser;
        for (int k = 0; k < kChoices; ++k) {
            e.Choices[size_t(k)] = gCurrentUDF.Choices[size_t(k)];
        }
        const qint16 R = e.nOrder;
        const qint16 T = gCurrentUDF.nOrder;
        if (T < R) {
            shiftOrders(nPos, 1, [R, T](qint16 nOrder) { return nOrder < R && nOrder >= T; });
        } else if (T > R) {
            shiftOrders(nPos, -1, [R, T](qint16 nOrder) { return nOrder > R && nOrder <= T; });
        }
        e.nOrder = T;
        SaveOrder(nPos, sTable, false, -1);
    }
    writeDefinition(sTable, NewOne);
    // A new field is read back from the table; a changed one is shown as memory has it.
    FillUDFList(sTable, gUsers(0).id, NewOne, true, false, g, false, nullptr);
    ShowIdle();
}

void UDFMaster::DeleteUDF(const QString& sTable, qint16 therow, FlexGrid* g, qint16 nClass,
                          qint32 lUser) {
    try {
        ShowBusy();
        const qint16 nPos = FindUDFPos(sTable, gUsers(0).id);
        const qint16 nRow = FindRowPos(nPos, gridOf(g).TextMatrix(therow, 0));
        const QString sCol = ReplaceText(gridOf(g).TextMatrix(therow, 0), "'", "''");
        gDBase.Execute(removalStatement(sTable, sCol, nClass, lUser));
        // Every record loses the value, also those of other users who share a personal column.
        gDBase.Execute("UPDATE " + sTable + " SET " + sCol + " = ''");
        shiftOrders(nPos, -1, [&](qint16 nOrder) { return nOrder > entry(nPos, nRow).nOrder; });
        SaveOrder(nPos, sTable, false, nRow);
        FillUDFList(sTable, gUsers(0).id, true, true, false, g, false, nullptr);
        ShowIdle();
    } catch (const rt::Error&) {
        // What fails here is nearly always the wipe meeting a record that another session holds,
        // so every failure is told in those words.
        ShowIdle();
        ShowMsg(
            "Unable to modify user defined fields because the data is locked by another "
            "process.  You can either close all other windows or restart " +
                gProductName + " to free the process.",
            platform::Msg::Exclamation);
    }
}

void UDFMaster::FillMyUDF(const QString& sTable, const QString& sRow, qint32 lUser) {
    const qint16 nPos = FindUDFPos(sTable, lUser);
    const UDFDefinition& e = entry(nPos, FindRowPos(nPos, sRow));
    gCurrentUDF.col = e.col;
    gCurrentUDF.desc = e.desc;
    gCurrentUDF.nType = e.nType;
    gCurrentUDF.decimals = e.decimals;
    gCurrentUDF.nClass = e.nClass;
    gCurrentUDF.lUser = e.lUser;
    gCurrentUDF.nOrder = e.nOrder;
    for (int k = 0; k < kChoices; ++k) {
        gCurrentUDF.Choices[size_t(k)] = e.Choices[size_t(k)];
    }
}

rt::Variant UDFMaster::FillUDF(const QString& sTable, qint32 lUserLookup, qint16 row, QString& col,
                               QString& desc, qint16& nType, qint16& decimals,
                               rt::Array<QString>& Choices, qint16& nClass, qint32& lUserOut) {
    const UDFDefinition& e = entry(FindUDFPos(sTable, lUserLookup), row);
    col = e.col;
    desc = e.desc;
    nType = e.nType;
    decimals = e.decimals;
    nClass = e.nClass;
    lUserOut = e.lUser;
    for (int k = 0; k < kChoices; ++k) {
        Choices(k) = e.Choices[size_t(k)];
    }
    return rt::Variant(true);
}

void UDFMaster::GetOrder(qint16 nIndex, const QString& sParent) {
    QString sOrder = rt::CStr(GetOption(orderTag(sParent), kOrderSection, QString(), false));
    // From here on a failing statement is passed over and the next one runs: a piece that is no
    // number leaves its entry at its own index. The last piece stays once no comma is left, so
    // a short list repeats its last number over the remaining entries.
    qint16 nCount = 0;
    rt::resumeNext([&] { nCount = UDFLists(nIndex).nCount; });
    for (int i = 1; i <= nCount; ++i) {
        const qsizetype p = sOrder.indexOf(',') + 1;
        rt::resumeNext([&] { entry(nIndex, i).nOrder = qint16(i); });
        if (p >= 1) {
            const QString sNumber = sOrder.left(p - 1);
            if (sOrder.length() > 2) {
                sOrder = sOrder.mid(p);
                rt::resumeNext([&] { entry(nIndex, i).nOrder = rt::CInt(sNumber); });
            }
        } else if (!sOrder.isEmpty()) {
            rt::resumeNext([&] { entry(nIndex, i).nOrder = rt::CInt(sOrder); });
        }
    }
}

void UDFMaster::SaveOrder(qint16 nIndex, const QString& sParent, bool bNew, qint16 nDeleteRow) {
    const UDFParentList& list = UDFLists(nIndex);
    QString text;
    const auto append = [&text](qint16 nOrder) {
        if (!text.isEmpty()) {
            text += ',';
        }
        text += QString::number(nOrder);
    };
    for (int i = 1; i <= list.nCount; ++i) {
        if (i != nDeleteRow) {
            append(list.Entries(i).nOrder);
        }
    }
    if (bNew) {
        append(int16(list.nCount + 1));
    }
    SaveOption(orderTag(sParent), kOrderSection, text, false);
}

void UDFMaster::shiftOrders(qint16 nIndex, int delta,
                            const std::function<bool(qint16 nOrder)>& moves) {
    UDFParentList& list = UDFLists(nIndex);
    for (int i = 1; i <= list.nCount; ++i) {
        UDFDefinition& e = list.Entries(i);
        if (moves(e.nOrder)) {
            e.nOrder = int16(e.nOrder + delta);
        }
    }
}

UDFMaster& UDFMaster1() {
    // Owned by the hidden window that holds what the suite's windows share; that window stands
    // below this library, so the instance is made here on first use.
    static QPointer<UDFMaster> one;
    if (!one) {
        one = new UDFMaster(&frmConfig::instance());
    }
    return *one;
}
