#include "schema.h"

#include <QRegularExpression>

#include <stdexcept>

namespace installer {

namespace {

std::vector<ColumnDef> stamps() {
    return {{"lastedit", "DATETIME"},
            {"lastmodby", "LONG"},
            {"addedon", "DATETIME"},
            {"addedby", "LONG"}};
}

std::vector<ColumnDef> numbered(const QString& prefix, int count, const QString& type) {
    std::vector<ColumnDef> columns;
    for (int i = 1; i <= count; ++i) {
        columns.push_back({prefix + QString::number(i), type});
    }
    return columns;
}

std::vector<ColumnDef> join(std::initializer_list<std::vector<ColumnDef>> parts) {
    std::vector<ColumnDef> columns;
    for (const auto& part : parts) {
        columns.insert(columns.end(), part.begin(), part.end());
    }
    return columns;
}

// The free columns of a field table; udfs defines which of them are in use.
constexpr int kFieldColumns = 10;

TableDef fieldTable(const QString& name) {
    return {name, join({{{"id", "LONG"}}, numbered("udf", kFieldColumns, "TEXT(255)")}), {"id"}};
}

TableDef reportsTable(const QString& name) {
    return {
        name,
        join({{{"id", "COUNTER"}, {"userid", "LONG"}, {"Name", "TEXT(100)"}, {"rpttype", "SHORT"}},
              stamps()}),
        {"userid"}};
}

TableDef reportControlsTable(const QString& name) {
    return {name,
            {{"id", "COUNTER"},
             {"rptid", "LONG"},
             {"cntlname", "TEXT(50)"},
             {"cntlvalue", "TEXT(255)"}},
            {"rptid"}};
}

// A table of the suite's business data: a counter, the key columns through which an employee's
// rows are found, and a few columns of its own.
TableDef businessTable(const QString& name, std::vector<ColumnDef> columns, QStringList indexes) {
    columns.insert(columns.begin(), {"id", "COUNTER"});
    return {name, columns, indexes};
}

std::vector<TableDef> makeSchema() {
    std::vector<TableDef> tables = {
        {"users",
         join({{{"id", "COUNTER"},
                {"Name", "TEXT(50)"},
                {"Logon", "TEXT(8)"},
                {"Password", "TEXT(8)"},
                {"accLevel", "SHORT"},
                {"fslevel", "SHORT"},
                {"Type", "SHORT"},
                {"num", "SHORT"}},
               stamps()}),
         {"Logon", "Type", "Name"}},
        {"extaccess", {{"userid", "LONG"}, {"extid", "LONG"}}, {"userid", "extid"}},
        {"rts",
         {{"id", "COUNTER"}, {"lt", "DATETIME"}, {"uid", "LONG"}, {"fslevel", "SHORT"}},
         {"uid"}},
        {"sysinfo",
         join({{{"id", "COUNTER"},
                {"dbversion", "SINGLE"},
                {"CompanyName", "TEXT(100)"},
                {"Address", "MEMO"},
                {"companyphone", "TEXT(30)"},
                {"companyfax", "TEXT(30)"},
                {"companyemail", "TEXT(100)"},
                {"companywebsite", "TEXT(100)"},
                {"Disclaimer", "MEMO"}},
               numbered("level", 10, "MEMO"),
               [] {
                   std::vector<ColumnDef> names;
                   for (int i = 1; i <= 10; ++i) {
                       names.push_back({"level" + QString::number(i) + "name", "TEXT(50)"});
                   }
                   return names;
               }()}),
         {}},
        {"options",
         join({{{"id", "COUNTER"}, {"userid", "LONG"}, {"section", "TEXT(50)"}},
               numbered("value", 25, "TEXT(255)"),
               stamps()}),
         {"userid,section"}},
        {"udfs",
         join({{{"id", "COUNTER"},
                {"Parent", "TEXT(20)"},
                {"Col", "TEXT(20)"},
                {"Descrpn", "TEXT(50)"},
                {"Type", "SHORT"},
                {"Decimals", "SHORT"},
                {"Class", "SHORT"},
                {"userid", "LONG"}},
               numbered("Choice", 24, "TEXT(50)"),
               stamps()}),
         {"Parent,Col,userid", "userid"}},
        fieldTable("clntudf"),
        fieldTable("clntudf2"),
        fieldTable("projudf"),
        fieldTable("listudf"),
        fieldTable("acctudf"),
        fieldTable("produdf"),
        {"reminder",
         join({{{"id", "COUNTER"},
                {"userid", "LONG"},
                {"startd", "DATETIME"},
                {"endd", "DATETIME"},
                {"subject", "TEXT(100)"},
                {"acttype", "SHORT"}},
               stamps()}),
         {"userid", "startd"}},
        {"watch_branch",
         {{"id", "COUNTER"}, {"branchid", "LONG"}, {"userid", "LONG"}},
         {"branchid", "userid"}},
        reportsTable("reports"),
        reportControlsTable("rptcntls"),
        reportsTable("reportsdef"),
        reportControlsTable("rptcntlsdef"),
        businessTable("billcode",
                      {{"userid", "LONG"}, {"code", "TEXT(20)"}, {"description", "TEXT(100)"}},
                      {"userid"}),
        businessTable("auto", {{"userid", "LONG"}, {"Name", "TEXT(50)"}}, {"userid"}),
        businessTable("autostep",
                      {{"autoid", "LONG"}, {"stepno", "SHORT"}, {"description", "TEXT(100)"}},
                      {"autoid"}),
        businessTable("budgets", {{"parentid", "LONG"}, {"type", "SHORT"}, {"amount", "CURRENCY"}},
                      {"parentid,type"}),
        businessTable("busdev", {{"userid", "LONG"}, {"description", "TEXT(100)"}}, {"userid"}),
        businessTable("modeling", {{"userid", "LONG"}, {"Name", "TEXT(50)"}}, {"userid"}),
        businessTable("clients", join({{{"userid", "LONG"}, {"Name", "TEXT(100)"}}, stamps()}),
                      {"userid", "Name"}),
        businessTable("files", {{"ownerid", "LONG"}, {"Name", "TEXT(100)"}, {"acctno", "TEXT(30)"}},
                      {"ownerid"}),
        businessTable("history",
                      {{"client_id", "LONG"}, {"histdate", "DATETIME"}, {"note", "MEMO"}},
                      {"client_id"}),
        businessTable("RelDocs", {{"accid", "LONG"}, {"docpath", "TEXT(255)"}}, {"accid"}),
        businessTable("RelPple",
                      {{"accid", "LONG"}, {"clientid", "LONG"}, {"relation", "TEXT(50)"}},
                      {"accid"}),
        businessTable("balance", {{"accid", "LONG"}, {"asof", "DATETIME"}, {"amount", "CURRENCY"}},
                      {"accid"}),
        businessTable("billsetup", {{"accid", "LONG"}, {"rate", "CURRENCY"}}, {"accid"}),
        businessTable("charges",
                      {{"accid", "LONG"},
                       {"userid", "LONG"},
                       {"chargedate", "DATETIME"},
                       {"amount", "CURRENCY"}},
                      {"accid", "userid"}),
        businessTable("invoice",
                      {{"accid", "LONG"},
                       {"userid", "LONG"},
                       {"invdate", "DATETIME"},
                       {"amount", "CURRENCY"}},
                      {"accid", "userid"}),
        businessTable("disburse", {{"invoiceid", "LONG"}, {"amount", "CURRENCY"}}, {"invoiceid"}),
        businessTable("funds", {{"accid", "LONG"}, {"amount", "CURRENCY"}}, {"accid"}),
        businessTable("trans",
                      {{"acc_id", "LONG"}, {"transdate", "DATETIME"}, {"amount", "CURRENCY"}},
                      {"acc_id"}),
        businessTable("lists", {{"listid", "LONG"}, {"userid", "LONG"}, {"Name", "TEXT(50)"}},
                      {"userid", "listid"}),
        businessTable("listflds", {{"listid", "LONG"}, {"fieldname", "TEXT(50)"}}, {"listid"}),
        businessTable("listmmbr", {{"listid", "LONG"}, {"clientid", "LONG"}}, {"listid"}),
        businessTable("reflib",
                      {{"userid", "LONG"}, {"title", "TEXT(100)"}, {"docpath", "TEXT(255)"}},
                      {"userid"}),
    };
    return tables;
}

QString columnDefinition(const ColumnDef& column) {
    static const QRegularExpression textSize(QStringLiteral("^TEXT\\((\\d+)\\)$"));
    const QString name = "[" + column.name + "]";
    if (const auto match = textSize.match(column.type); match.hasMatch()) {
        // The declared size is what the engine holds a text to.
        return name + " VARCHAR(" + match.captured(1) + ") COLLATE NOCASE CHECK (length(" + name +
               ") <= " + match.captured(1) + ")";
    }
    static const QRegularExpression decimal(QStringLiteral("^DECIMAL\\(\\d+,\\d+\\)$"));
    if (decimal.match(column.type).hasMatch()) {
        return name + " " + column.type;
    }
    static const QHash<QString, QString> types = {
        {"COUNTER", "INTEGER PRIMARY KEY AUTOINCREMENT"},
        {"MEMO", "LONGTEXT COLLATE NOCASE"},
        {"BYTE", "BYTE"},
        {"SHORT", "SMALLINT"},
        {"LONG", "INTEGER"},
        {"SINGLE", "SINGLE"},
        {"DOUBLE", "DOUBLE"},
        {"CURRENCY", "CURRENCY"},
        {"DATETIME", "DATETIME"},
        {"BIT", "BIT"},
        {"LONGBINARY", "LONGBLOB"},
    };
    if (!types.contains(column.type)) {
        throw std::invalid_argument("unknown column type " + column.type.toStdString());
    }
    return name + " " + types.value(column.type);
}

}  // namespace

const std::vector<TableDef>& schema() {
    static const std::vector<TableDef> tables = makeSchema();
    return tables;
}

QStringList createStatements(const TableDef& table) {
    QStringList columns;
    for (const ColumnDef& column : table.columns) {
        columns << columnDefinition(column);
    }
    QStringList statements{"CREATE TABLE [" + table.name + "] (" + columns.join(", ") + ")"};
    for (const QString& index : table.indexes) {
        const QStringList parts = index.split(',');
        QStringList bracketed;
        for (const QString& part : parts) {
            bracketed << "[" + part + "]";
        }
        statements << "CREATE INDEX [ix_" + table.name + "_" + parts.join('_') + "] ON [" +
                          table.name + "] (" + bracketed.join(", ") + ")";
    }
    return statements;
}

void createTable(engine::Database& db, const TableDef& table) {
    for (const QString& statement : createStatements(table)) {
        db.execute(statement);
    }
}

const TableDef& tableDef(const QString& name) {
    for (const TableDef& table : schema()) {
        if (table.name == name) {
            return table;
        }
    }
    throw std::invalid_argument("no table " + name.toStdString());
}

}  // namespace installer
