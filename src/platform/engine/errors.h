#pragma once

#include "platform/rt_error.h"

namespace engine {

// The engine's failure numbers.
enum ErrorNumber {
    InvalidArgument = 3001,
    TableExists = 3010,
    UpdateWithoutEdit = 3020,
    NoCurrentRecord = 3021,
    DuplicateValue = 3022,
    NoTransaction = 3034,
    FileNotFound = 3024,
    ReadOnly = 3027,
    InvalidPath = 3044,
    DatabaseExists = 3204,
    CannotOpenFile = 3051,
    TooFewParameters = 3061,
    CannotExecuteSelect = 3065,
    UnknownName = 3070,
    SyntaxError = 3075,
    InputTableNotFound = 3078,
    CharactersAfterEnd = 3142,
    DataTooLong = 3163,
    FieldNotUpdatable = 3164,
    RecordDeleted = 3167,
    Locked = 3218,
    ItemNotFound = 3265,
    PropertyNotFound = 3270,
    NullNotAllowed = 3314,
    UnrecognizedFormat = 3343,
    ObjectInvalid = 3420,
    ConversionError = 3421,
    CriteriaMismatch = 3464,
};

// What a failed call means to the caller, to word the failure.
enum class FailureContext { Statement, Criteria };

// The failure of that number with its text, the placeholders filled in order.
rt::Error error(int number, const QString& argument = QString(),
                const QString& argument2 = QString());

}  // namespace engine
