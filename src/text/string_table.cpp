//===- text/string_table.cpp - Numbered strings from a caller's array -----===//
#include "qxutil/text.h"

cStringTable::cStringTable() : table_(nullptr) {}
cStringTable::cStringTable(sStringTable* table) : table_(table) {}
cStringTable::cStringTable(const cStringTable& other)
    : cStringResource(other), table_(other.table_) {}
cStringTable& cStringTable::operator=(const cStringTable& other) {
  table_ = other.table_;
  return *this;
}
cStringTable::~cStringTable() {}

cStringTable::operator const sStringTable*() const { return table_; }

bool cStringTable::FindString(int id, wchar_t* buffer) const {
  if (!table_)
    return false;
  for (const sStringTable* entry = table_; entry->id != 0; ++entry) {
    if (entry->id == id) {
      strcpyn(buffer, entry->text, 255);
      return true;
    }
  }
  return false;
}
