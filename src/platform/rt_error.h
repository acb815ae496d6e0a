#pragma once

#include <QString>

#include <exception>
#include <string>

namespace rt {

// Run-time error numbers that the program raises or tests for.
enum ErrorNumber {
    InvalidProcedureCall = 5,
    Overflow = 6,
    SubscriptOutOfRange = 9,
    DivisionByZero = 11,
    TypeMismatch = 13,
    FileNotFound = 53,
    PathNotFound = 76,
    ObjectNotSet = 91,
    InvalidPropertyValue = 380,
    InvalidUseOfNull = 94,
};

// A run-time failure as the runtime reports it: a number, the name of what raised it, and the
// text that a user sees in the failure's message box.
class Error : public std::exception {
public:
    Error(int number, QString description, QString source = QString());

    // The runtime's own failure of that number, with its standard text.
    static Error standard(int number, const QString& source = QString());

    int number() const { return number_; }
    const QString& description() const { return description_; }
    const QString& source() const { return source_; }
    const char* what() const noexcept override { return what_.c_str(); }

private:
    int number_;
    QString description_;
    QString source_;
    std::string what_;
};

// Runs one statement of a stretch that passes over failures: a run-time failure in it is
// dropped, and the caller goes on with its next statement.
template <typename Statement>
void resumeNext(Statement&& statement) {
    try {
        statement();
    } catch (const Error&) {
    }
}

// The runtime's text for a failure number; "Application-defined or object-defined error" for a
// number it has no text of its own for.
QString errorText(int number);

}  // namespace rt
