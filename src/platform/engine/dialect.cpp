#include "platform/engine/dialect.h"

#include "platform/dates.h"
#include "platform/engine/engine.h"
#include "platform/engine/errors.h"

#include <QLocale>

#include <algorithm>

namespace engine::dialect {

namespace {

rt::Error syntaxError(const QString& what, const QString& sql) {
    return error(SyntaxError, what, sql);
}

// Reads a quoted run that starts at `i`, with a doubled quote standing for one.
QString quoted(const QString& sql, int& i, QChar quote) {
    QString text;
    ++i;
    while (i < sql.size()) {
        if (sql[i] == quote) {
            if (i + 1 < sql.size() && sql[i + 1] == quote) {
                text += quote;
                i += 2;
                continue;
            }
            ++i;
            return text;
        }
        text += sql[i++];
    }
    throw syntaxError(QStringLiteral("Syntax error in string"), sql);
}

QString enclosed(const QString& sql, int& i, QChar close, const char* what) {
    const int end = sql.indexOf(close, i + 1);
    if (end < 0) {
        throw syntaxError(QLatin1String(what), sql);
    }
    const QString text = sql.mid(i + 1, end - i - 1);
    i = end + 1;
    return text;
}

bool isWordChar(QChar c) {
    return c.isLetterOrNumber() || c == '_' || c == '$';
}

QString quoteString(const QString& text) {
    return "'" + QString(text).replace(QLatin1String("'"), QLatin1String("''")) + "'";
}

QString quoteName(const QString& text) {
    return "\"" + QString(text).replace(QLatin1String("\""), QLatin1String("\"\"")) + "\"";
}

QString nameOf(const Token& token) {
    return token.text;
}

bool isNameToken(const Token& token) {
    return token.kind == Token::Word || token.kind == Token::Name;
}

}  // namespace

bool Token::isWord(const char* word) const {
    return kind == Word && text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

Tokens tokenize(const QString& sql) {
    Tokens tokens;
    int i = 0;
    while (i < sql.size()) {
        const QChar c = sql[i];
        if (c.isSpace()) {
            while (i < sql.size() && sql[i].isSpace()) {
                ++i;
            }
            tokens.push_back({Token::Space, QStringLiteral(" ")});
        } else if (c == '\'' || c == '"') {
            tokens.push_back({Token::String, quoted(sql, i, c)});
        } else if (c == '[') {
            tokens.push_back({Token::Name, enclosed(sql, i, ']', "Invalid bracketing of name")});
        } else if (c == '#') {
            tokens.push_back({Token::DateLiteral, enclosed(sql, i, '#', "Syntax error in date")});
        } else if (c.isDigit() || (c == '.' && i + 1 < sql.size() && sql[i + 1].isDigit())) {
            int j = i;
            while (j < sql.size() && (sql[j].isDigit() || sql[j] == '.')) {
                ++j;
            }
            if (j < sql.size() && (sql[j] == 'e' || sql[j] == 'E')) {
                int k = j + 1;
                if (k < sql.size() && (sql[k] == '+' || sql[k] == '-')) {
                    ++k;
                }
                if (k < sql.size() && sql[k].isDigit()) {
                    j = k;
                    while (j < sql.size() && sql[j].isDigit()) {
                        ++j;
                    }
                }
            }
            tokens.push_back({Token::Number, sql.mid(i, j - i)});
            i = j;
        } else if (isWordChar(c)) {
            int j = i;
            while (j < sql.size() && isWordChar(sql[j])) {
                ++j;
            }
            tokens.push_back({Token::Word, sql.mid(i, j - i)});
            i = j;
        } else {
            static const QStringList pairs = {"<>", "<=", ">=", "!=", "||"};
            const QString two = sql.mid(i, 2);
            const QString symbol = pairs.contains(two) ? two : QString(c);
            tokens.push_back({Token::Symbol, symbol});
            i += static_cast<int>(symbol.size());
        }
    }
    // One statement per call: a semicolon may end it, but nothing may follow.
    for (size_t t = 0; t < tokens.size(); ++t) {
        if (tokens[t].isSymbol(";")) {
            for (size_t rest = t + 1; rest < tokens.size(); ++rest) {
                if (tokens[rest].kind != Token::Space) {
                    throw error(CharactersAfterEnd);
                }
            }
            tokens.resize(t);
            break;
        }
    }
    while (!tokens.empty() && tokens.back().kind == Token::Space) {
        tokens.pop_back();
    }
    while (!tokens.empty() && tokens.front().kind == Token::Space) {
        tokens.erase(tokens.begin());
    }
    return tokens;
}

namespace {

// One token as the engine reads it. A server's names are folded to lower case, as it folds the
// names it is given without quotes; the embedded engine's names compare without regard to case.
QString rendered(const Token& t, bool server) {
    switch (t.kind) {
        case Token::String:
            return quoteString(t.text);
        case Token::Name:
            return quoteName(server ? t.text.toLower() : t.text);
        case Token::DateLiteral: {
            // Date literals are in US order whatever the machine's locale.
            const auto serial =
                rt::parseDateText(t.text, QLocale(QLocale::English, QLocale::UnitedStates));
            if (!serial) {
                throw error(SyntaxError, QStringLiteral("Syntax error in date"),
                            "#" + t.text + "#");
            }
            return QString::number(*serial, 'g', 17);
        }
        case Token::Word:
            if (t.isWord("true")) {
                return QStringLiteral("-1");
            }
            return t.isWord("false") ? QStringLiteral("0") : t.text;
        case Token::Symbol:
            return t.text == "&" ? QStringLiteral("||") : t.text;
        default:
            return t.text;
    }
}

// What the embedded engine takes for part of a word or a number: any character past ASCII too.
bool isEngineWordChar(QChar c) {
    return isWordChar(c) || c.unicode() >= 0x80;
}

// Whether the embedded engine would read two tokens written with nothing between them as other
// tokens than these two. The dialect has no comments and no parameter markers, so where the
// engine would join them only a blank keeps the meaning.
bool runTogether(const QString& before, const QString& after) {
    static const QStringList operatorsAndComments = {
        "--", "/*", "->", "<<", ">>", "<=", ">=", "<>", "==", "!=", "||"};
    const QChar last = before.back();
    const QChar next = after.front();
    bool number = false;
    before.toDouble(&number);
    const bool wordGoesOn =
        isEngineWordChar(next) && (isEngineWordChar(last) || last == ':' || last == '@');
    const bool blob = isEngineWordChar(last) && next == '\'';  // x'41'
    const bool numberGoesOn = number && next == '.';           // 36526 .5
    const bool quoteDoubled = last == next && (last == '\'' || last == '"');
    return wordGoesOn || blob || numberGoesOn || quoteDoubled ||
           operatorsAndComments.contains(QString(last) + next);
}

}  // namespace

namespace {

QString renderTokens(const Tokens& tokens, size_t first, size_t last, bool server) {
    QString out;
    QString previous;
    last = std::min(last, tokens.size());
    for (size_t i = first; i < last; ++i) {
        const QString text = rendered(tokens[i], server);
        if (!previous.isEmpty() && runTogether(previous, text)) {
            out += ' ';
        }
        out += text;
        previous = text;
    }
    return out;
}

}  // namespace

QString render(const Tokens& tokens, size_t first, size_t last) {
    return renderTokens(tokens, first, last, false);
}

QString renderForServer(const Tokens& tokens, size_t first, size_t last) {
    return renderTokens(tokens, first, last, true);
}

std::vector<size_t> topLevel(const Tokens& tokens) {
    std::vector<size_t> result;
    int depth = 0;
    for (size_t i = 0; i < tokens.size(); ++i) {
        const Token& t = tokens[i];
        if (t.isSymbol("(")) {
            ++depth;
        } else if (t.isSymbol(")")) {
            --depth;
        } else if (depth == 0 && t.kind != Token::Space) {
            result.push_back(i);
        }
    }
    return result;
}

namespace {

// The table of "SELECT ... FROM table [WHERE ...] [ORDER BY ...] [LIMIT n]"; empty when the
// statement reads more than one table or another source.
QString singleTableOf(const Tokens& tokens, const std::vector<size_t>& top) {
    for (size_t k = 0; k + 1 < top.size(); ++k) {
        if (!tokens[top[k]].isWord("from")) {
            continue;
        }
        const Token& table = tokens[top[k + 1]];
        if (!isNameToken(table)) {
            return {};
        }
        if (k + 2 < top.size()) {
            const Token& next = tokens[top[k + 2]];
            if (!next.isWord("where") && !next.isWord("order") && !next.isWord("limit")) {
                return {};
            }
        }
        return nameOf(table);
    }
    return {};
}

// The one table a select reads when its rows can be written back: no DISTINCT, UNION or grouping.
QString updatableTableOf(const Tokens& tokens, const std::vector<size_t>& top) {
    static const char* const blockers[] = {"distinct", "union", "group", "having", "into"};
    for (size_t index : top) {
        for (const char* word : blockers) {
            if (tokens[index].isWord(word)) {
                return {};
            }
        }
    }
    return singleTableOf(tokens, top);
}

void analyseSelectInto(Statement& statement, const std::vector<size_t>& top, size_t intoAt) {
    const Tokens& tokens = statement.tokens;
    statement.kind = Statement::SelectInto;
    size_t target = intoAt + 1;
    if (target < top.size() && tokens[top[target]].kind == Token::Name &&
        tokens[top[target]].text.startsWith(QLatin1String(";database="), Qt::CaseInsensitive)) {
        statement.intoDatabase = tokens[top[target]].text.mid(10);
        if (target + 2 >= top.size() || !tokens[top[target + 1]].isSymbol(".")) {
            throw error(SyntaxError, QStringLiteral("Syntax error"), render(tokens));
        }
        target += 2;
    }
    if (target >= top.size() || !isNameToken(tokens[top[target]]) || target + 1 >= top.size() ||
        !tokens[top[target + 1]].isWord("from")) {
        throw error(SyntaxError, QStringLiteral("Syntax error"), render(tokens));
    }
    statement.intoTable = nameOf(tokens[top[target]]);
    Tokens source(tokens.begin(), tokens.begin() + top[intoAt]);
    source.insert(source.end(), tokens.begin() + top[target + 1], tokens.end());
    statement.intoSource = source;
    const std::vector<size_t> sourceTop = topLevel(source);
    if (sourceTop.size() >= 2 && source[sourceTop[1]].isSymbol("*")) {
        const QString table = updatableTableOf(source, sourceTop);
        if (!table.isEmpty() && sourceTop.size() == 4) {
            statement.intoSourceTable = table;
        }
    }
}

}  // namespace

namespace {

constexpr size_t npos = size_t(-1);

// Words of the dialect's statements: never a column, and never a function when a ( follows.
bool isKeyword(const Token& token) {
    static const char* const keywords[] = {
        "all",  "and",    "any",   "as",     "between", "by",    "distinct", "distinctrow", "else",
        "eqv",  "exists", "from",  "having", "imp",     "in",    "into",     "is",          "join",
        "like", "limit",  "mod",   "not",    "on",      "or",    "select",   "set",         "some",
        "then", "top",    "union", "values", "when",    "where", "xor"};
    for (const char* word : keywords) {
        if (token.isWord(word)) {
            return true;
        }
    }
    return false;
}

size_t nextSignificant(const Tokens& tokens, size_t i) {
    while (i < tokens.size() && tokens[i].kind == Token::Space) {
        ++i;
    }
    return i;
}

size_t previousSignificant(const Tokens& tokens, size_t i) {
    while (i-- > 0) {
        if (tokens[i].kind != Token::Space) {
            return i;
        }
    }
    return npos;
}

// The index of the parenthesis that closes (step 1) or opens (step -1) the one at `at`.
size_t matchingParenthesis(const Tokens& tokens, size_t at, int step) {
    int depth = 0;
    for (size_t i = at; i < tokens.size(); i += step) {
        depth += tokens[i].isSymbol("(") ? step : tokens[i].isSymbol(")") ? -step : 0;
        if (depth == 0) {
            return i;
        }
    }
    return npos;
}

bool isCall(const Tokens& tokens, size_t i) {
    const size_t next = nextSignificant(tokens, i + 1);
    return tokens[i].kind == Token::Word && !isKeyword(tokens[i]) && next < tokens.size() &&
           tokens[next].isSymbol("(");
}

// A criteria's columns stand as numbered parameters (?1), which are values too.
bool isValue(const Token& token) {
    if (token.kind == Token::Symbol) {
        return token.text.startsWith('?');
    }
    return token.kind != Token::Space && !isKeyword(token);
}

// Operators that bind more tightly than MOD.
bool bindsTighterThanMod(const Token& token) {
    return token.isSymbol("*") || token.isSymbol("/") || token.isSymbol("\\") ||
           token.isSymbol("^");
}

// Operators that bind more tightly than a comparison such as LIKE: arithmetic and &.
bool bindsTighterThanComparison(const Token& token) {
    return bindsTighterThanMod(token) || token.isWord("mod") || token.isSymbol("+") ||
           token.isSymbol("-") || token.isSymbol("&");
}

using Binding = bool (*)(const Token&);

// Where the value that ends at `last` begins: a call, a parenthesized expression, or a
// value, column or table.column; npos when `last` ends none.
size_t primaryBefore(const Tokens& tokens, size_t last) {
    if (last == npos) {
        return npos;
    }
    if (tokens[last].isSymbol(")")) {
        const size_t open = matchingParenthesis(tokens, last, -1);
        const size_t name = open == npos ? npos : previousSignificant(tokens, open);
        return name != npos && isCall(tokens, name) ? name : open;
    }
    if (!isValue(tokens[last])) {
        return npos;
    }
    const size_t dot = previousSignificant(tokens, last);
    const size_t owner = dot == npos ? npos : previousSignificant(tokens, dot);
    return owner != npos && tokens[dot].isSymbol(".") && isValue(tokens[owner]) ? owner : last;
}

// Past the end of the value that begins at `first`; npos when none begins there.
size_t primaryAfter(const Tokens& tokens, size_t first) {
    if (first >= tokens.size()) {
        return npos;
    }
    if (tokens[first].isSymbol("(") || isCall(tokens, first)) {
        const size_t close = matchingParenthesis(
            tokens, nextSignificant(tokens, first + !tokens[first].isSymbol("(")), 1);
        return close == npos ? npos : close + 1;
    }
    if (!isValue(tokens[first])) {
        return npos;
    }
    const size_t dot = nextSignificant(tokens, first + 1);
    const size_t member = nextSignificant(tokens, dot + 1);
    return dot < tokens.size() && tokens[dot].isSymbol(".") && member < tokens.size() &&
                   isValue(tokens[member])
               ? member + 1
               : first + 1;
}

// The left operand of the operator at `at`: values joined by operators that bind more tightly.
size_t leftOperand(const Tokens& tokens, size_t at, Binding bindsTighter) {
    size_t start = primaryBefore(tokens, previousSignificant(tokens, at));
    for (size_t op = start == npos ? npos : previousSignificant(tokens, start);
         op != npos && bindsTighter(tokens[op]); op = previousSignificant(tokens, start)) {
        const size_t before = primaryBefore(tokens, previousSignificant(tokens, op));
        if (before == npos) {
            break;
        }
        start = before;
    }
    return start;
}

// Past the end of the right operand of the operator at `at`, a sign allowed before it.
size_t rightOperand(const Tokens& tokens, size_t at, Binding bindsTighter) {
    size_t first = nextSignificant(tokens, at + 1);
    if (first < tokens.size() && (tokens[first].isSymbol("-") || tokens[first].isSymbol("+"))) {
        first = nextSignificant(tokens, first + 1);
    }
    size_t end = primaryAfter(tokens, first);
    for (size_t op = nextSignificant(tokens, end);
         end != npos && op < tokens.size() && bindsTighter(tokens[op]);
         op = nextSignificant(tokens, end)) {
        end = primaryAfter(tokens, nextSignificant(tokens, op + 1));
    }
    return end;
}

struct Function {
    const char* name;
    int fewest;
    int most;
    int type;        // the engine type of its result; 0 when that depends on the arguments
    bool aggregate;  // the embedded engine's own, which means the same
};

const Function kFunctions[] = {
    {"Count", 1, 1, dbLong, true},    {"Sum", 1, 1, 0, true},
    {"Avg", 1, 1, dbDouble, true},    {"Min", 1, 1, 0, true},
    {"Max", 1, 1, 0, true},           {"CDate", 1, 1, dbDate, false},
    {"DateAdd", 3, 3, dbDate, false}, {"DateDiff", 3, 3, dbLong, false},
    {"Now", 0, 0, dbDate, false},     {"Date", 0, 0, dbDate, false},
    {"Year", 1, 1, dbInteger, false}, {"Month", 1, 1, dbInteger, false},
    {"Day", 1, 1, dbInteger, false},  {"Chr", 1, 1, dbText, false},
    {"UCase", 1, 1, dbText, false},   {"LCase", 1, 1, dbText, false},
    {"Len", 1, 1, dbLong, false},     {"Left", 2, 2, dbText, false},
    {"Right", 2, 2, dbText, false},   {"Mid", 2, 3, dbText, false},
    {"Trim", 1, 1, dbText, false},    {"LTrim", 1, 1, dbText, false},
    {"RTrim", 1, 1, dbText, false},   {"Nz", 2, 2, 0, false},
    {"IIf", 3, 3, 0, false},          {"Format", 1, 2, dbText, false},
    {"Mod", 2, 2, dbLong, false},
};

const Function* functionCalled(const QString& name) {
    for (const Function& function : kFunctions) {
        if (name.compare(QLatin1String(function.name), Qt::CaseInsensitive) == 0 ||
            name == functionName(function.name)) {
            return &function;
        }
    }
    return nullptr;
}

bool callsAggregate(const Tokens& tokens) {
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (isCall(tokens, i)) {
            const Function* function = functionCalled(tokens[i].text);
            if (function && function->aggregate) {
                return true;
            }
        }
    }
    return false;
}

int argumentCount(const Tokens& tokens, size_t open, size_t close) {
    if (nextSignificant(tokens, open + 1) == close) {
        return 0;
    }
    int count = 1;
    for (size_t i = open + 1; i < close; ++i) {
        if (tokens[i].isSymbol("(")) {
            i = matchingParenthesis(tokens, i, 1);
        } else if (tokens[i].isSymbol(",")) {
            ++count;
        }
    }
    return count;
}

// LIKE is an operator only: written as a call, the embedded engine would take it for its own
// like(pattern, text), the other way round.
void refuseLikeCall(const Tokens& tokens, size_t at, const QString& sql) {
    size_t before = previousSignificant(tokens, at);
    if (before != npos && tokens[before].isWord("not")) {
        before = previousSignificant(tokens, before);
    }
    if (primaryBefore(tokens, before) == npos) {
        throw error(SyntaxError, QStringLiteral("Syntax error (missing operator)"), sql);
    }
}

void translateCalls(Tokens& tokens, const QString& sql) {
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i].isWord("like")) {
            refuseLikeCall(tokens, i, sql);
        }
        const size_t before = previousSignificant(tokens, i);
        const bool columnList =
            before != npos && (tokens[before].isWord("into") || tokens[before].isWord("update"));
        if (!isCall(tokens, i) || columnList) {
            continue;
        }
        const Function* function = functionCalled(tokens[i].text);
        if (!function) {
            throw error(SyntaxError, "Undefined function '" + tokens[i].text + "'", sql);
        }
        const size_t open = nextSignificant(tokens, i + 1);
        const size_t close = matchingParenthesis(tokens, open, 1);
        const int count = close == npos ? -1 : argumentCount(tokens, open, close);
        if (count < function->fewest || count > function->most) {
            throw error(SyntaxError,
                        "Wrong number of arguments used with function '" + tokens[i].text + "'",
                        sql);
        }
        if (!function->aggregate) {
            tokens[i].text = functionName(function->name);
        }
    }
}

void translateMod(Tokens& tokens, const QString& sql) {
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (!tokens[i].isWord("mod")) {
            continue;
        }
        const size_t first = leftOperand(tokens, i, bindsTighterThanMod);
        const size_t end = rightOperand(tokens, i, bindsTighterThanMod);
        if (first == npos || end == npos) {
            throw error(SyntaxError, QStringLiteral("Syntax error (missing operator)"), sql);
        }
        Tokens call = {{Token::Word, functionName("Mod")}, {Token::Symbol, "("}};
        call.insert(call.end(), tokens.begin() + first, tokens.begin() + i);
        call.push_back({Token::Symbol, ","});
        call.insert(call.end(), tokens.begin() + i + 1, tokens.begin() + end);
        call.push_back({Token::Symbol, ")"});
        tokens.erase(tokens.begin() + first, tokens.begin() + end);
        tokens.insert(tokens.begin() + first, call.begin(), call.end());
        i = first + call.size() - 1;
    }
}

// The dialect's / divides as real numbers, the embedded engine's divides integers as integers:
// a real factor just before the division makes it divide reals, its product being the left
// operand, as * and / take their operands left to right.
void translateDivision(Tokens& tokens) {
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i].isSymbol("/")) {
            tokens.insert(tokens.begin() + i, {{Token::Symbol, "*"}, {Token::Number, "1.0"}});
            i += 2;
        }
    }
}

// The top-level index of the first item of a select list, past ALL, DISTINCT or DISTINCTROW.
size_t firstItem(const Tokens& tokens, const std::vector<size_t>& top) {
    const bool quantified =
        top.size() > 1 && (tokens[top[1]].isWord("all") || tokens[top[1]].isWord("distinct") ||
                           tokens[top[1]].isWord("distinctrow"));
    return quantified ? 2 : 1;
}

void translateStatementForms(Tokens& tokens, const QString& sql) {
    const std::vector<size_t> top = topLevel(tokens);
    if (top.size() > 1 && tokens[top[0]].isWord("delete") && tokens[top[1]].isSymbol("*")) {
        tokens.erase(tokens.begin() + top[1]);
        return;
    }
    if (top.size() < 2 || !tokens[top[0]].isWord("select")) {
        return;
    }
    const size_t item = firstItem(tokens, top);
    if (item < top.size() && tokens[top[item]].isWord("top")) {
        bool whole = false;
        const Token* count = item + 1 < top.size() ? &tokens[top[item + 1]] : nullptr;
        if (!count || count->kind != Token::Number || (count->text.toUInt(&whole), !whole) ||
            (item + 2 < top.size() && tokens[top[item + 2]].isWord("percent"))) {
            throw error(SyntaxError, QStringLiteral("Syntax error in TOP clause"), sql);
        }
        const Token limit = *count;
        tokens.erase(tokens.begin() + top[item], tokens.begin() + top[item + 1] + 1);
        tokens.insert(tokens.end(),
                      {{Token::Space, " "}, {Token::Word, "LIMIT"}, {Token::Space, " "}, limit});
    }
    if (tokens[top[1]].isWord("distinctrow")) {
        if (singleTableOf(tokens, topLevel(tokens)).isEmpty()) {
            throw error(SyntaxError, QStringLiteral("DISTINCTROW over more than one table"), sql);
        }
        tokens.erase(tokens.begin() + top[1]);
    }
}

// The types of the select list's items, from what translate() made of them.
std::vector<int> itemTypesOf(const Tokens& tokens) {
    const std::vector<size_t> top = topLevel(tokens);
    std::vector<int> types;
    std::vector<size_t> item;
    auto finish = [&] {
        const bool star = !item.empty() && tokens[item.back()].isSymbol("*");
        const bool aliased = item.size() == 3 && tokens[item[1]].isWord("as");
        const Function* function = (item.size() == 1 || aliased) && isCall(tokens, item[0])
                                       ? functionCalled(tokens[item[0]].text)
                                       : nullptr;
        types.push_back(star ? -1 : function ? function->type : 0);
        item.clear();
    };
    for (size_t k = firstItem(tokens, top); k < top.size(); ++k) {
        const Token& token = tokens[top[k]];
        if (token.isWord("from") || token.isWord("into")) {
            break;
        }
        if (token.isSymbol(",")) {
            finish();
        } else {
            item.push_back(top[k]);
        }
    }
    finish();
    return types;
}

bool isDefinition(const Tokens& tokens) {
    const std::vector<size_t> top = topLevel(tokens);
    return !top.empty() && (tokens[top[0]].isWord("create") || tokens[top[0]].isWord("alter") ||
                            tokens[top[0]].isWord("drop"));
}

}  // namespace

QString functionName(const char* name) {
    return "dialect_" + QString::fromLatin1(name).toLower();
}

Tokens translated(const QString& sql) {
    Tokens tokens = tokenize(sql);
    if (!isDefinition(tokens)) {
        translateStatementForms(tokens, sql);
        translateCalls(tokens, sql);
        translateDivision(tokens);
        translateMod(tokens, sql);
    }
    return tokens;
}

Tokens likeAsCalls(const Tokens& source) {
    Tokens tokens = source;
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (!tokens[i].isWord("like")) {
            continue;
        }
        const size_t before = previousSignificant(tokens, i);
        const bool negated = before != npos && tokens[before].isWord("not");
        const size_t op = negated ? before : i;
        const size_t first = leftOperand(tokens, op, bindsTighterThanComparison);
        const size_t end = rightOperand(tokens, i, bindsTighterThanComparison);
        if (first == npos || end == npos) {
            throw error(SyntaxError, QStringLiteral("Syntax error (missing operator)"),
                        render(source));
        }
        Tokens call;
        if (negated) {
            call = {{Token::Word, "NOT"}, {Token::Space, " "}};
        }
        call.push_back({Token::Word, functionName("Like")});
        call.push_back({Token::Symbol, "("});
        call.insert(call.end(), tokens.begin() + i + 1, tokens.begin() + end);
        call.push_back({Token::Symbol, ","});
        call.insert(call.end(), tokens.begin() + first, tokens.begin() + op);
        call.push_back({Token::Symbol, ")"});
        tokens.erase(tokens.begin() + first, tokens.begin() + end);
        tokens.insert(tokens.begin() + first, call.begin(), call.end());
        i = first + call.size() - 1;
    }
    return tokens;
}

namespace {

// One place of a LIKE pattern: a run of any length, or one character of a kind.
struct PatternPlace {
    bool anyRun = false;
    bool anyCharacter = false;
    bool digit = false;
    bool negated = false;
    std::vector<std::pair<QChar, QChar>> ranges;  // case-folded

    bool matches(QChar c) const {
        if (anyCharacter || digit) {
            return anyCharacter || (c >= '0' && c <= '9');
        }
        const QChar folded = c.toCaseFolded();
        const bool inSet = std::any_of(ranges.begin(), ranges.end(), [&](const auto& range) {
            return folded >= range.first && folded <= range.second;
        });
        return inSet != negated;
    }
};

PatternPlace literal(QChar c) {
    PatternPlace place;
    place.ranges.push_back({c.toCaseFolded(), c.toCaseFolded()});
    return place;
}

// The set of a [ ] that starts at `i`, which ends past its ].
PatternPlace patternSet(const QString& pattern, int& i) {
    const int close = pattern.indexOf(']', i + 1);
    if (close < 0) {
        throw error(SyntaxError, QStringLiteral("Invalid pattern string"), pattern);
    }
    PatternPlace place;
    int c = i + 1;
    if (c < close && pattern[c] == '!') {
        place.negated = true;
        ++c;
    }
    for (; c < close; ++c) {
        const bool range = c + 2 < close && pattern[c + 1] == '-';
        const QChar from = pattern[c].toCaseFolded();
        const QChar to = range ? pattern[c + 2].toCaseFolded() : from;
        place.ranges.push_back({from, to});
        c += range ? 2 : 0;
    }
    i = close + 1;
    return place;
}

// The engine's own wildcards only: % and _ are plain characters to it.
std::vector<PatternPlace> compilePattern(const QString& pattern) {
    std::vector<PatternPlace> places;
    for (int i = 0; i < pattern.size();) {
        const QChar c = pattern[i];
        if (c == '[') {
            places.push_back(patternSet(pattern, i));
            continue;
        }
        PatternPlace place = literal(c);
        place.anyRun = c == '*';
        place.anyCharacter = c == '?';
        place.digit = c == '#';
        places.push_back(place);
        ++i;
    }
    return places;
}

}  // namespace

bool matchesPattern(const QString& text, const QString& pattern) {
    const std::vector<PatternPlace> places = compilePattern(pattern);
    // Each run first takes nothing and then one more character at a time whenever what follows
    // it fails; only the latest run needs to give way, as any earlier one can't do better.
    size_t p = 0;
    int t = 0;
    size_t run = npos;
    int runTaken = 0;
    while (t < text.size()) {
        if (p < places.size() && places[p].anyRun) {
            run = p++;
            runTaken = t;
        } else if (p < places.size() && places[p].matches(text[t])) {
            ++p;
            ++t;
        } else if (run != npos) {
            p = run + 1;
            t = ++runTaken;
        } else {
            return false;
        }
    }
    while (p < places.size() && places[p].anyRun) {
        ++p;
    }
    return p == places.size();
}

Statement analyse(const QString& sql) {
    Statement statement;
    statement.tokens = translated(sql);
    const Tokens& tokens = statement.tokens;
    const std::vector<size_t> top = topLevel(tokens);
    if (top.empty()) {
        throw error(SyntaxError, QStringLiteral("Syntax error"), sql);
    }
    if (top.size() == 1 && isNameToken(tokens[top[0]]) && !tokens[top[0]].isWord("select")) {
        statement.kind = Statement::TableName;
        statement.updatableTable = nameOf(tokens[top[0]]);
        return statement;
    }
    if (!tokens[top[0]].isWord("select")) {
        statement.kind = Statement::Action;
        return statement;
    }
    for (size_t k = 0; k < top.size(); ++k) {
        if (tokens[top[k]].isWord("into")) {
            analyseSelectInto(statement, top, k);
            return statement;
        }
    }
    statement.kind = Statement::Select;
    statement.itemTypes = itemTypesOf(tokens);
    // A row of totals stands for many rows, none of which it could be written back to.
    statement.updatableTable = callsAggregate(tokens) ? QString() : updatableTableOf(tokens, top);
    return statement;
}

}  // namespace engine::dialect
