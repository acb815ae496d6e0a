#include "platform/rt_error.h"

#include <QHash>

namespace rt {

Error::Error(int number, QString description, QString source)
    : number_(number),
      description_(std::move(description)),
      source_(std::move(source)),
      what_(QStringLiteral("%1: %2").arg(number_).arg(description_).toStdString()) {}

Error Error::standard(int number, const QString& source) {
    return Error(number, errorText(number), source);
}

QString errorText(int number) {
    static const QHash<int, QString> texts = {
        {3, "Return without GoSub"},
        {5, "Invalid procedure call or argument"},
        {6, "Overflow"},
        {7, "Out of memory"},
        {9, "Subscript out of range"},
        {11, "Division by zero"},
        {13, "Type mismatch"},
        {52, "Bad file name or number"},
        {53, "File not found"},
        {55, "File already open"},
        {57, "Device I/O error"},
        {58, "File already exists"},
        {61, "Disk full"},
        {62, "Input past end of file"},
        {68, "Device unavailable"},
        {70, "Permission denied"},
        {71, "Disk not ready"},
        {75, "Path/File access error"},
        {76, "Path not found"},
        {91, "Object variable or With block variable not set"},
        {94, "Invalid use of Null"},
        {380, "Invalid property value"},
        {424, "Object required"},
        {438, "Object doesn't support this property or method"},
    };
    return texts.value(number, QStringLiteral("Application-defined or object-defined error"));
}

}  // namespace rt
