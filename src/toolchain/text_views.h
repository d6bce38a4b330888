#pragma once
// The text and the geometry of the error window and the built-in editor,
// and the message lines of the assemblers.
#include <optional>
#include <string>

namespace zenta {

// The file's lines, each followed by CR LF; a CR LF file reads the same as
// an LF one. Nothing when it cannot be opened (`ok` tells).
std::string read_lines_crlf(const std::string& path, bool* ok = nullptr);
// Text as a Qt text box holds it (LF line ends) with CR LF line ends.
std::string with_crlf(const std::string& text);
// The file's bytes as they are; nothing when it cannot be read.
std::string read_whole_text(const std::string& path);
// Whether a text's lines end in CR LF, by its first line end; a text without
// one takes the system's own (CR LF on Windows, LF elsewhere).
bool crlf_line_ends(const std::string& text);

// Where a message line points: "Error[113]   /src/bad.asm 3 : text" or
// "/src/bad.asm:3:Error[113] text", and the same for Warning and Message.
// A relative file is taken from `source_folder`.
struct SourceLocation {
  std::string file;
  int line = 0;
};
std::optional<SourceLocation> message_location(const std::string& line,
                                               const std::string& source_folder);

// Places of controls in twips, from the window's size in twips.
struct TwipsBox {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};
struct ErrorViewLayout {
  TwipsBox text;
  int exit_left = 0;
  int exit_top = 0;
};
// Text H - 500 high and W - 140 wide; EXIT at W - 1500, H - 1000. A window
// too small for the rules gets sizes and places of 0 instead of negative ones.
ErrorViewLayout error_view_layout(int width, int height);

struct EditorLayout {
  TwipsBox text;
  int save_left = 0;
  int save_top = 0;
  int exit_left = 0;
  int exit_top = 0;
};
// Nothing while the window is under 500 twips high; otherwise text H - 500
// by W - 140, SAVE at W - 2500, H - 1200 and EXIT at W - 1500, H - 1200,
// none below 0.
std::optional<EditorLayout> editor_layout(int width, int height);

}  // namespace zenta
