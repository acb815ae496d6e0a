#include "mdb_source.h"

#include "installation.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

// glib first: mdbtools.h includes it inside extern "C", where its C++ parts don't compile.
#include <glib.h>
#include <mdbtools.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace installer {

namespace {

constexpr qint64 kJet3Page = 2048;
constexpr qint64 kJet4Page = 4096;
// The longest text or memo value read; a longer one is refused rather than cut.
constexpr size_t kBindSize = 4 * 1024 * 1024;
// How long the trial read may go without a sign of progress before the file is taken for one
// that sends libmdb round in circles.
constexpr int kIdleMilliseconds = 30000;
constexpr int kRowsPerSign = 1000;
constexpr rlim_t kReaderMemory = rlim_t(4) * 1024 * 1024 * 1024;

void checkHeader(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw InstallError("cannot read " + path + ": " + file.errorString());
    }
    static const QByteArray magic("\x00\x01\x00\x00Standard Jet DB\x00", 20);
    const QByteArray head = file.read(magic.size() + 1);
    if (!head.startsWith(magic)) {
        throw InstallError(path + " is not a Jet database file.");
    }
    const char version = head.back();
    if (version != 0 && version != 1) {
        throw InstallError(path +
                           " is a Jet database of a format later than Jet 4, which is not "
                           "read here.");
    }
    const qint64 page = version == 0 ? kJet3Page : kJet4Page;
    if (file.size() % page != 0 || file.size() < 3 * page) {
        throw InstallError(path + " is cut short: a Jet " + (version == 0 ? "3" : "4") +
                           " file is a whole number of pages, of " + QString::number(page) +
                           " bytes each.");
    }
}

struct TableFree {
    void operator()(MdbTableDef* table) const { mdb_free_tabledef(table); }
};
using TablePtr = std::unique_ptr<MdbTableDef, TableFree>;

LegacyColumn::Type typeOf(const MdbColumn& column, const QString& table) {
    using Type = LegacyColumn::Type;
    switch (column.col_type) {
        case MDB_BOOL:
            return Type::Boolean;
        case MDB_BYTE:
            return Type::Byte;
        case MDB_INT:
            return Type::Integer;
        case MDB_LONGINT:
            return Type::Long;
        case MDB_MONEY:
            return Type::Currency;
        case MDB_FLOAT:
            return Type::Single;
        case MDB_DOUBLE:
            return Type::Double;
        case MDB_DATETIME:
            return Type::DateTime;
        case MDB_BINARY:
            return Type::Binary;
        case MDB_TEXT:
            return Type::Text;
        case MDB_OLE:
            return Type::OleObject;
        case MDB_MEMO:
            return Type::Memo;
        case MDB_REPID:
            return Type::ReplicationId;
        case MDB_NUMERIC:
            return Type::Numeric;
        default:
            throw InstallError(QStringLiteral("the column %1 of the table %2 is of a type (%3) "
                                              "that is not read here.")
                                   .arg(QString::fromUtf8(column.name), table)
                                   .arg(column.col_type));
    }
}

template <class Number>
Number littleEndian(const MdbField& field) {
    return qFromLittleEndian<Number>(field.value);
}

}  // namespace

// libmdb on one file.
class MdbSource::Reader {
public:
    explicit Reader(const QString& path) : path_(path) {
        mdb_ = mdb_open(QFile::encodeName(path).constData(), MDB_NOFLAGS);
        if (!mdb_) {
            throw InstallError(path + " is not a Jet database file that can be read.");
        }
        mdb_set_bind_size(mdb_, kBindSize);
        mdb_set_boolean_fmt_numbers(mdb_);
        try {
            checkCatalog();
        } catch (...) {
            mdb_close(mdb_);
            throw;
        }
    }
    ~Reader() { mdb_close(mdb_); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    QStringList tables() const {
        QStringList names;
        for (unsigned i = 0; i < mdb_->num_catalog; ++i) {
            auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb_->catalog, i));
            if (entry->object_type == MDB_TABLE && mdb_is_user_table(entry)) {
                names << QString::fromUtf8(entry->object_name);
            }
        }
        return names;
    }

    std::vector<LegacyColumn> columns(const QString& name) { return columnsOf(*open(name), name); }

    void readRows(const QString& name, const std::function<void(std::vector<rt::Variant>&&)>& row) {
        const TablePtr table = open(name);
        const std::vector<LegacyColumn> legacy = columnsOf(*table, name);
        // libmdb hands texts over decoded, from UCS-2 or the file's code page; numerics as their
        // exact digits. Every other value is read from the row as it is stored.
        std::vector<std::unique_ptr<char[]>> bound(table->num_cols);
        std::vector<int> lengths(table->num_cols);
        for (unsigned c = 0; c < table->num_cols; ++c) {
            const int type = columnOf(*table, c).col_type;
            if (type == MDB_TEXT || type == MDB_MEMO || type == MDB_OLE || type == MDB_NUMERIC) {
                bound[c].reset(new char[kBindSize]);
                mdb_bind_column(table.get(), int(c) + 1, bound[c].get(), &lengths[c]);
            }
        }
        mdb_rewind_table(table.get());
        std::vector<MdbField> fields(MDB_MAX_COLS);
        qint64 read = 0;
        while (mdb_fetch_row(table.get())) {
            int start = 0;
            size_t size = 0;
            mdb_find_row(mdb_, int(table->cur_row) - 1, &start, &size);
            const int count = mdb_crack_row(table.get(), start, size, fields.data());
            std::vector<rt::Variant> values(table->num_cols, rt::Variant::null());
            for (int f = 0; f < count; ++f) {
                const MdbField& field = fields[f];
                const auto c = unsigned(field.colnum);
                values[c] = valueOf(*table, c, field, bound[c].get(), lengths[c], legacy[c]);
            }
            row(std::move(values));
            ++read;
        }
        if (read != qint64(table->num_rows)) {
            throw InstallError(QStringLiteral("the table %1 in %2 cannot be read whole: %3 of its "
                                              "%4 rows read; the file is damaged.")
                                   .arg(name, path_)
                                   .arg(read)
                                   .arg(table->num_rows));
        }
    }

private:
    // libmdb reads what it can of a file cut short and passes over the rest: the tables it lists
    // must all lie within the file, and it must list them all.
    void checkCatalog() {
        const auto damaged = [&] {
            return InstallError("the list of tables in " + path_ +
                                " cannot be read: the file is damaged or cut short.");
        };
        if (!mdb_read_catalog(mdb_, MDB_ANY) || mdb_->num_catalog == 0) {
            throw damaged();
        }
        const qint64 pages = QFileInfo(path_).size() / mdb_->fmt->pg_size;
        for (unsigned i = 0; i < mdb_->num_catalog; ++i) {
            const auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb_->catalog, i));
            if (entry->object_type == MDB_TABLE && qint64(entry->table_pg) >= pages) {
                throw damaged();
            }
        }
        const TablePtr catalog = open(QStringLiteral("MSysObjects"));
        mdb_rewind_table(catalog.get());
        unsigned rows = 0;
        while (mdb_fetch_row(catalog.get())) {
            ++rows;
        }
        if (rows != catalog->num_rows || rows != mdb_->num_catalog) {
            throw damaged();
        }
    }

    std::vector<LegacyColumn> columnsOf(const MdbTableDef& table, const QString& name) const {
        std::vector<LegacyColumn> columns;
        for (unsigned c = 0; c < table.num_cols; ++c) {
            const MdbColumn& column = columnOf(table, c);
            LegacyColumn legacy;
            legacy.name = QString::fromUtf8(column.name);
            legacy.type = typeOf(column, name);
            // A Jet 4 text holds two bytes a character.
            legacy.size = IS_JET3(mdb_) ? column.col_size : column.col_size / 2;
            // libmdb has the names of these two the other way round.
            legacy.precision = column.col_scale;
            legacy.scale = column.col_prec;
            legacy.autoNumber = column.is_long_auto != 0;
            columns.push_back(legacy);
        }
        return columns;
    }

    // By the catalog read once: libmdb's lookup by name reads it anew, which takes the entries
    // from under a table already open.
    TablePtr open(const QString& name) {
        MdbCatalogEntry* found = nullptr;
        for (unsigned i = 0; i < mdb_->num_catalog && !found; ++i) {
            auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb_->catalog, i));
            if (entry->object_type == MDB_TABLE && QString::fromUtf8(entry->object_name) == name) {
                found = entry;
            }
        }
        TablePtr table(found ? mdb_read_table(found) : nullptr);
        if (!table || !mdb_read_columns(table.get())) {
            throw InstallError("the table " + name + " in " + path_ +
                               " cannot be read: the file is damaged.");
        }
        return table;
    }

    static const MdbColumn& columnOf(const MdbTableDef& table, unsigned c) {
        return *static_cast<MdbColumn*>(g_ptr_array_index(table.columns, c));
    }

    rt::Variant valueOf(const MdbTableDef& table, unsigned c, const MdbField& field,
                        const char* text, int length, const LegacyColumn& column) {
        using Type = LegacyColumn::Type;
        if (column.type == Type::Boolean) {
            return rt::Variant(!field.is_null);  // the null flag is where a yes/no is kept
        }
        if (field.is_null) {
            return rt::Variant::null();
        }
        switch (column.type) {
            case Type::Byte:
                return rt::Variant(qint16(*static_cast<const quint8*>(field.value)));
            case Type::Integer:
                return rt::Variant(littleEndian<qint16>(field));
            case Type::Long:
                return rt::Variant(int(littleEndian<qint32>(field)));
            case Type::Currency:
                return rt::Variant::currency(littleEndian<qint64>(field));
            case Type::Single:
                return rt::Variant(littleEndian<float>(field));
            case Type::Double:
                return rt::Variant(littleEndian<double>(field));
            case Type::DateTime:
                return rt::Variant::date(littleEndian<double>(field));
            case Type::Binary:
                return rt::Variant(
                    QByteArray(static_cast<const char*>(field.value), qsizetype(field.siz)));
            case Type::ReplicationId: {
                char* id = mdb_uuid_to_string(field.value, 0);
                const QString result = QString::fromLatin1(id);
                g_free(id);
                return rt::Variant(result);
            }
            case Type::OleObject: {
                size_t size = 0;
                void* bytes =
                    mdb_ole_read_full(mdb_, &const_cast<MdbColumn&>(columnOf(table, c)), &size);
                const QByteArray result(static_cast<const char*>(bytes), qsizetype(size));
                free(bytes);
                return rt::Variant(result);
            }
            default:
                // Decoding stops short of the end of the buffer when the value is longer.
                if (size_t(length) + 4 >= kBindSize) {
                    throw InstallError(QStringLiteral("a value in the column %1 of %2 is longer "
                                                      "than the %3 bytes read.")
                                           .arg(column.name, path_)
                                           .arg(kBindSize));
                }
                return rt::Variant(QString::fromUtf8(text, length));
        }
    }

    QString path_;
    MdbHandle* mdb_ = nullptr;
};

namespace {

rlim_t mappedBytes() {
    unsigned long long pages = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%llu", &pages) != 1) {
            pages = 0;
        }
        std::fclose(statm);
    }
    return rlim_t(pages) * rlim_t(sysconf(_SC_PAGESIZE));
}

// Reads the whole file once in a child process, which gives a sign every so many rows, and
// puts what went wrong into words: a failure the reader reports, a crash, or no progress.
void readThroughApart(const QString& path) {
    int channel[2];
    if (pipe(channel) != 0) {
        throw InstallError("cannot start reading " + path + ": " + strerror(errno));
    }
    // On top of what the process has mapped already, which a sanitizer's shadow makes huge.
    const rlim_t limit = mappedBytes() + kReaderMemory;
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        close(channel[0]);
        // A reader gone astray goes with the tool when that is stopped, and can't take the
        // machine's memory.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) {
            _exit(1);
        }
        const rlimit memory{limit, limit};
        setrlimit(RLIMIT_AS, &memory);
        // The parent tells what went wrong; libmdb's own complaints would only confuse.
        const int quiet = open("/dev/null", O_WRONLY);
        dup2(quiet, STDERR_FILENO);
        int code = 0;
        try {
            MdbSource::Reader reader(path);
            for (const QString& table : reader.tables()) {
                qint64 rows = 0;
                reader.readRows(table, [&](std::vector<rt::Variant>&&) {
                    if (++rows % kRowsPerSign == 0) {
                        (void)!write(channel[1], ".", 1);
                    }
                });
                (void)!write(channel[1], ".", 1);
            }
        } catch (const InstallError& failure) {
            const std::string message = std::string("!") + failure.what();
            (void)!write(channel[1], message.data(), message.size());
            code = 1;
        }
        _exit(code);
    }
    close(channel[1]);
    if (child < 0) {
        close(channel[0]);
        throw InstallError("cannot start reading " + path + ": " + strerror(errno));
    }
    QByteArray said;
    bool stalled = false;
    for (;;) {
        pollfd waiting{channel[0], POLLIN, 0};
        if (poll(&waiting, 1, kIdleMilliseconds) == 0) {
            stalled = true;
            kill(child, SIGKILL);
            break;
        }
        char piece[512];
        const ssize_t got = read(channel[0], piece, sizeof piece);
        if (got <= 0) {
            break;
        }
        said.append(piece, got);
    }
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (stalled) {
        throw InstallError("reading " + path +
                           " made no progress for half a minute: the file is "
                           "damaged.");
    }
    if (WIFSIGNALED(status)) {
        throw InstallError(path + " is damaged: reading it failed (signal " +
                           QString::number(WTERMSIG(status)) + ").");
    }
    if (const qsizetype mark = said.indexOf('!'); mark >= 0) {
        throw InstallError(QString::fromUtf8(said.mid(mark + 1)));
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw InstallError(path + " is damaged: reading it failed.");
    }
}

}  // namespace

MdbSource::MdbSource(const QString& path) {
    checkHeader(path);
    readThroughApart(path);
    reader_ = std::make_unique<Reader>(path);
}

MdbSource::~MdbSource() = default;

QStringList MdbSource::tables() {
    return reader_->tables();
}

std::vector<LegacyColumn> MdbSource::columns(const QString& table) {
    return reader_->columns(table);
}

void MdbSource::readRows(const QString& table,
                         const std::function<void(std::vector<rt::Variant>&&)>& row) {
    reader_->readRows(table, row);
}

}  // namespace installer
