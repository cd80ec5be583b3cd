#pragma once

#include <cstddef>

#include "printer/OrvaPrinter.h"

// One table on its way to a stream, field by field, with a tab between fields and a line end behind
// each row: what the source files of OrvaPrinter share. Rows are handed over many at a time, the
// last ones when the table is destroyed; meanwhile nothing else may be written to the stream.
class OrvaPrinterTable {
 public:
  explicit OrvaPrinterTable(LumoStream* stream);
  ~OrvaPrinterTable();
  OrvaPrinterTable(const OrvaPrinterTable&) = delete;
  OrvaPrinterTable& operator=(const OrvaPrinterTable&) = delete;

  // Texts are interpreted as by the stream, and null is the empty field.
  OrvaPrinterTable& Put(const char* text);
  OrvaPrinterTable& Put(int value) { return Put(static_cast<long>(value)); }
  OrvaPrinterTable& Put(long value);
  OrvaPrinterTable& Put(double value);
  OrvaPrinterTable& Put(const LumoConstant* value);
  void EndRow();

  template <class... Values>
  void PutRow(Values... values) {
    (Put(values), ...);
    EndRow();
  }

  // Columns have a switch of the printer (isOn) and a heading. The first row: the heading of what
  // the rows are about, and those of the columns that are switched on.
  template <class Column, std::size_t N>
  void PutHeader(const OrvaPrinter* printer, const char* first, const Column (&columns)[N]) {
    Put(first);
    for (const Column& column : columns) {
      if (printer->*column.isOn) Put(column.heading);
    }
    EndRow();
  }

 private:
  static constexpr std::size_t SIZE = 4096;

  void _BeginField();
  // Hands over what there is, if there isn't room for `size` characters more; where they go.
  char* _MakeRoom(std::size_t size);
  void _HandOver();

  LumoStream* _stream;
  std::size_t _length = 0;
  bool _isRowEmpty = true;
  char _text[SIZE];
};
