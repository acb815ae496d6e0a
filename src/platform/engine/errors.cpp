#include "platform/engine/errors.h"

#include <QHash>

namespace engine {

rt::Error error(int number, const QString& argument, const QString& argument2) {
    static const QHash<int, QString> texts = {
        {InvalidArgument, "Invalid argument."},
        {TableExists, "Table '%1' already exists."},
        {UpdateWithoutEdit, "Update or CancelUpdate without AddNew or Edit."},
        {NoCurrentRecord, "No current record."},
        {DuplicateValue,
         "Duplicate value in index, primary key, or relationship. Changes were unsuccessful."},
        {NoTransaction, "You tried to commit or rollback without first beginning a transaction."},
        {FileNotFound, "Couldn't find file '%1'."},
        {ReadOnly, "Couldn't update; database or object is read-only."},
        {InvalidPath, "'%1' isn't a valid path."},
        {DatabaseExists, "Database already exists."},
        {CannotOpenFile, "Couldn't open file '%1'."},
        {TooFewParameters, "Too few parameters. Expected %1."},
        {CannotExecuteSelect, "Can't execute a select query."},
        {UnknownName, "The engine doesn't recognize '%1' as a valid field name or expression."},
        {SyntaxError, "%1 in query expression '%2'."},
        {InputTableNotFound, "Couldn't find input table or query '%1'."},
        {CharactersAfterEnd, "Characters found after end of SQL statement."},
        {DataTooLong, "Couldn't perform operation; data too long for field."},
        {FieldNotUpdatable, "Field can't be updated."},
        {RecordDeleted, "Record is deleted."},
        {Locked, "Couldn't update; currently locked."},
        {ItemNotFound, "Item not found in this collection."},
        {PropertyNotFound, "Property not found."},
        {NullNotAllowed, "Field '%1' can't contain a null value."},
        {UnrecognizedFormat, "Unrecognized database format '%1'."},
        {ObjectInvalid, "Object is invalid or not set."},
        {ConversionError, "Data type conversion error."},
        {CriteriaMismatch, "Data type mismatch in criteria expression."},
    };
    QString text = texts.value(number, QStringLiteral("%1"));
    if (text.contains(QLatin1String("%2"))) {
        text = text.arg(argument, argument2);
    } else if (text.contains(QLatin1String("%1"))) {
        text = text.arg(argument);
    }
    return rt::Error(number, text, QStringLiteral("Engine"));
}

}  // namespace engine
