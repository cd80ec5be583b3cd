#pragma once

#include <cstddef>

#include "printer/OrvaPrinter.h"
#include "support/text/LumoStream.h"

// The fields of one row of a table, with a tab between them and a line end behind them: what the
// source files of OrvaPrinter share.
class OrvaPrinterRow {
 public:
  explicit OrvaPrinterRow(LumoStream* stream) : _stream(stream) {}
  template <class Value>
  OrvaPrinterRow& Put(Value value) {
    if (!_isEmpty) _stream->Put("\t");
    _isEmpty = false;
    _stream->Put(value);
    return *this;
  }
  void End() { _stream->Putln(); }

 private:
  LumoStream* _stream;
  bool _isEmpty = true;
};

// A whole row.
template <class... Values>
void OrvaPutRow(LumoStream* stream, Values... values) {
  OrvaPrinterRow row(stream);
  (row.Put(values), ...);
  row.End();
}

// A table has rows of columns that have a switch (isOn) and a heading. Its first row: the heading
// of what the rows are about, and those of the columns that are switched on.
template <class Column, std::size_t N>
void OrvaPutHeader(const OrvaPrinter* printer, const char* first, const Column (&columns)[N],
                   LumoStream* stream) {
  OrvaPrinterRow row(stream);
  row.Put(first);
  for (const Column& column : columns) {
    if (printer->*column.isOn) row.Put(column.heading);
  }
  row.End();
}
