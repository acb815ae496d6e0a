#pragma once

#include "legacy_source.h"

#include <memory>

namespace installer {

// An office's legacy database file (Jet 3 or Jet 4), read with libmdb. Before libmdb reads it
// for the import the file is checked: its header must be a Jet 3 or Jet 4 header and its length
// a whole number of pages, and a process of its own reads it through once, so that a damaged
// file on which libmdb would crash or go round in circles is refused with a message instead.
// Every table must read whole, as many rows as the file says it holds.
class MdbSource : public LegacySource {
public:
    explicit MdbSource(const QString& path);
    ~MdbSource() override;

    QStringList tables() override;
    std::vector<LegacyColumn> columns(const QString& table) override;
    void readRows(const QString& table,
                  const std::function<void(std::vector<rt::Variant>&&)>& row) override;

    class Reader;

private:
    std::unique_ptr<Reader> reader_;
};

}  // namespace installer
