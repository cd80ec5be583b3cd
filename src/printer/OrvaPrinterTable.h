#pragma once

#include <cstddef>
#include <initializer_list>
#include <variant>

#include "printer/OrvaPrinter.h"

// A heading with its only value; in rows, the title of the block that begins with it.
struct OrvaPrinterField {
  const char* heading;
  std::variant<long, double, const char*> value;
  const char* block = nullptr;
};

// One table on its way to a stream, field by field, with a tab between fields and a line end behind
// each row, in the layout of the printer: what the source files of OrvaPrinter share. Rows are
// handed over many at a time, the last ones when the table is destroyed; meanwhile nothing else may
// be written to the stream.
//
// In columns the table has one heading, which a file that is added to has already, and all its rows
// have as many fields: an item of a list ends with ";", unless it is the last, and a tab, a
// line end, a backslash, or a ";" in an item, stands as "\t", "\n", "\r", "\\" or "\;".
class OrvaPrinterTable {
 public:
  // In columns a table with a name goes to a file of its own in place of the stream.
  OrvaPrinterTable(const OrvaPrinter* printer, LumoStream* stream, const char* name = nullptr);
  ~OrvaPrinterTable();
  OrvaPrinterTable(const OrvaPrinterTable&) = delete;
  OrvaPrinterTable& operator=(const OrvaPrinterTable&) = delete;

  bool IsInColumns() const { return _isInColumns; }

  // In rows, texts are interpreted as by the stream. Null is the empty field.
  OrvaPrinterTable& Put(const char* text);
  OrvaPrinterTable& Put(int value) { return Put(static_cast<long>(value)); }
  OrvaPrinterTable& Put(long value);
  OrvaPrinterTable& Put(double value);
  OrvaPrinterTable& Put(const LumoConstant* value);
  // The last field of a row, in columns; in rows each item is a field.
  OrvaPrinterTable& BeginList();
  OrvaPrinterTable& PutItem(const char* text);
  void EndRow();

  template <class... Values>
  void PutRow(Values... values) {
    (Put(values), ...);
    EndRow();
  }

  // The first row, of both layouts and of columns only.
  template <class... Headings>
  void PutHeader(Headings... headings) {
    (Put(headings), ...);
    _EndHeader();
  }
  template <class... Headings>
  void PutHeaderOfColumns(Headings... headings) {
    if (_isInColumns) PutHeader(headings...);
  }
  // The headings of the columns that are switched on, between the two others. Columns
  // have a switch of the printer (isOn) and a heading, and may have another in columns.
  template <class Column, std::size_t N>
  void PutHeaderOf(const OrvaPrinter* printer, const char* first, const Column (&columns)[N],
                   const char* last = nullptr) {
    if (first != nullptr) Put(first);
    for (const Column& column : columns) {
      if (!(printer->*column.isOn)) continue;
      const char* heading = column.heading;
      if constexpr (requires { column.headingInColumns; }) {
        if (_isInColumns && column.headingInColumns != nullptr) heading = column.headingInColumns;
      }
      Put(heading);
    }
    if (last != nullptr) Put(last);
    _EndHeader();
  }

  // In rows a row per field, with an empty line before each block but the first; in columns a
  // heading and one row.
  void PutRecord(std::initializer_list<OrvaPrinterField> fields);

 private:
  static constexpr std::size_t SIZE = 4096;

  // A continued file has the heading already; a table with another is not written.
  void _EndHeader();
  void _PutEscaped(const char* text, bool isItem);
  // Hands over what there is, if there isn't room for `size` characters more; where they go. Less
  // may be written: _End tells where it ends.
  char* _MakeRoom(std::size_t size);
  // Makes room for the field and the tab before it, which the first of a row has none of.
  char* _BeginField(std::size_t size);
  void _End(const char* end) { _length = static_cast<std::size_t>(end - _text); }
  void _HandOver();

  const OrvaPrinter* _printer;
  LumoStream* _stream;
  const bool _isInColumns;
  const bool _ownsStream;
  bool _isContinued;
  bool _isRefused = false;
  bool _isListEmpty = true;
  std::size_t _length = 0;
  bool _isRowEmpty = true;
  char _text[SIZE];
};
