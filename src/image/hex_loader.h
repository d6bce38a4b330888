#pragma once
// Reading Intel HEX (INHX8M) text into the program image: byte addresses,
// two bytes per program word, low byte first. Fields, records and the image
// arithmetic stand here; opening the file and showing the result is the
// main window's LOAD_HEX.
#include <cstdint>
#include <istream>
#include <optional>
#include <string>

#include "image/programmer_state.h"

namespace zenta {

// The longest record a HEX file can hold: ':', count, address, type, 255
// data bytes and the checksum. No valid field is longer.
inline constexpr std::size_t kLongestHexRecord = 1 + 2 + 4 + 2 + 2 * 255 + 2;

// Reads one line without its line end (LF, or CR LF). False at the end of
// the input, on a read error, or when the line holds a field (text between
// commas, leading blanks aside) longer than `longest_field`; then too_long
// is set and reading goes no further, so a file of one endless line costs
// no more memory than one record.
bool read_hex_line(std::istream& in, std::string& line, std::size_t longest_field, bool& too_long);

// The fields of a HEX file, read straight from the stream: a field ends at
// a line end or at a comma, and blanks before it are skipped. A well-formed
// file gives one field per line; a blank line gives an empty field. Only the
// first kLongestHexRecord characters of a field are kept: no record reads
// further, and the first character alone decides whether a field is one, so
// an endless line costs no more memory than a record and still ends the
// loading as any other line that is no record does.
class HexFieldReader {
 public:
  explicit HexFieldReader(std::istream& in) : in_(in) {}
  // The next field; nullopt at the end of the file or on a read error.
  std::optional<std::string> next();
  // True when reading stopped on a read error rather than at the end.
  bool failed() const { return failed_; }
  // The 1-based line of the field returned last.
  int line() const { return line_; }

 private:
  std::istream& in_;
  int line_ = 0;
  bool line_started_ = false;  // the field returned last ended at a comma
  bool after_comma_ = false;
  bool failed_ = false;
};

// Value of `count` characters of `field` from the 1-based `position`, read as
// hexadecimal digits of either case up to the first other character.
// Characters beyond the field's end read as nothing; no digits give 0.
int hex_field(const std::string& field, std::size_t position, std::size_t count);

// One field taken as a record.
struct HexRecord {
  enum class Kind { kNotRecord, kEnd, kData };
  Kind kind = Kind::kNotRecord;
  int last_offset = 0;       // offset of the record's last data byte (count - 1, 0 for count 0)
  std::int16_t address = 0;  // byte address, signed 16-bit: 0x8000..0xFFFF are negative
};
// A field not starting with ":" is no record; type "01" is the end record;
// every other type is data. A count of 0 still stands for one byte.
HexRecord parse_hex_record(const std::string& field);
// Data byte j of a data record (characters 10 + 2j and 11 + 2j).
int hex_record_byte(const std::string& field, int j);

// Blanks words 0..9999 to 0x3FFF; byte 20000 keeps its value.
void blank_program_image(ProgrammerState& state);

// Last program word of a record that ends at byte `end_index`: half the
// index, an exact half going to the even neighbour.
std::int16_t last_word_of_byte(int end_index);

struct HexLoadReport {
  bool ok = false;         // reached the end of the loop
  int first_address = -1;  // byte address of the first record; -1 when none was seen
  // Where and why a load that is not ok failed: the line (0 for a file that
  // could not be read at all) and the reason in words.
  int failed_line = 0;
  std::string failure;
  // The field read last (the loader shows each in Text2) and "index  value"
  // of the byte stored last (Text_ADMON); nullopt when there was none.
  std::optional<std::string> last_field;
  std::optional<std::string> last_byte;
};

// How records other than data and end are taken. The panel's own loader
// stores the bytes of every other record type as data; the checked loader
// applies extended segment (02) and linear (04) address records to the
// addresses of the data records after them, as the toolchains mean them,
// and ignores any other type (the check refuses those files first).
struct HexLoadOptions {
  bool extended_addresses = false;
};

// Reads the records of `in` into state.ProgramBuffer and raises
// state.LastAddress, up to the end record, a field that is no record or the
// end of the file. Fails on a read error and on a byte whose index falls
// outside 0..20000; what was stored before the failing byte stays.
HexLoadReport load_hex_records(std::istream& in, ProgrammerState& state,
                               const HexLoadOptions& options = {});

}  // namespace zenta

namespace zenta {

// Opens the file (its derived name matched without regard to case when the
// exact name is missing), blanks the program image, sets LastAddress to 0
// and reads the records. The file is closed on every path; a missing file,
// a folder or an unreadable file gives a report that is not ok.
HexLoadReport load_hex_file(const std::string& path, ProgrammerState& state);
// The same from a file's text read beforehand (read_input_file), so a
// checked load reads its file once for the check and the image.
HexLoadReport load_hex_text(const std::string& text, ProgrammerState& state,
                            const HexLoadOptions& options = {});

}  // namespace zenta
