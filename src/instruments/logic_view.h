#pragma once
// The logic view LA: a one-channel logic analyser of 480 samples. The
// capture's exchanges, the sample store and its operations, and the
// drawing as data (lines and texts in twips) that the window only paints.
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "instruments/meter.h"
#include "link/unit.h"

namespace zenta {

inline constexpr int kLaSampleCount = 480;
inline constexpr int kLaStoreSize = 521;
inline constexpr int kLaCaptureBytes = 64;
inline constexpr int kLaUsedBytes = 60;
inline constexpr int kLaMaxPeriod = 100;
inline constexpr std::uint32_t LaTraceColor = 0x000080;
inline constexpr std::uint32_t LaGridColor = 0xE0E0E0;
inline constexpr std::uint32_t LaMajorGridColor = 0x00FF00;
inline constexpr std::uint32_t LaIdleColor = 0x000000;
inline constexpr std::uint32_t kLaCaptureColor = 0xFF8000;
inline constexpr std::uint32_t kLaReadyColor = 0xFFFFFF;
inline constexpr int kLaPictureWidth = 5265;
inline constexpr int kLaPictureHeight = 2000;
inline constexpr int kLaWidth = 6800;
inline constexpr int kLaHeight = 3100;
// With the pattern, DATA SET and the listing brought into view.
inline constexpr int kLaExtendedWidth = 11400;
inline constexpr const char* kLaDefaultPattern =
    "01010101110011001100101010101011000101011010110011100010100011101010101";

using CaptureBytes = std::array<std::uint8_t, kLaCaptureBytes>;
// Entries are '0' (low) and '1' (high); DATA SET may store any character,
// which is listed but not drawn.
using LaSampleStore = std::array<char, kLaStoreSize>;

// The sample-period byte from the sample-time text: the leading number
// rounded with halves to even, its low 8 bits, at most 100. `rewritten` is
// set when the text must then read "100".
struct PeriodByte {
  std::uint8_t byte = 0;
  bool rewritten = false;
};
PeriodByte sample_period_byte(const std::string& text);

// Byte 59 - j carries samples 8j..8j+7, bit 0 the earliest; bytes 60..63
// are not used. Sets store entries 0..511, leaving the rest.
void unpack_capture(const CaptureBytes& bytes, LaSampleStore& store);

struct LaCapture {
  ExchangeResult result = ExchangeResult::kBusy;  // kFailed when any exchange failed
  CaptureBytes bytes{};
};
// UNIT_LA_START and the eight UNIT_LA_READ blocks; the caller holds the
// unit's guard. A failed read leaves what the reply buffer held, which the
// window shows as it is.
LaCapture capture_exchanges(UnitLink& link, std::uint8_t period, bool positive_edge);
// The same inside the unit's guard; kBusy, and nothing sent, while another
// operation holds the unit.
LaCapture capture(Unit& unit, std::uint8_t period, bool positive_edge);
// The 480 samples of a capture, sample 0 first.
std::vector<bool> capture_samples(const CaptureBytes& bytes);

// What the sample store holds: the exports save only a good capture as
// one, and the window says which it is.
enum class LaContent { kNothing, kCapture, kFailedCapture, kPattern };

struct DrawLine {
  int x1, y1, x2, y2;
  std::uint32_t color;
  bool operator==(const DrawLine&) const = default;
};
struct DrawText {
  int x, y;  // top-left corner
  std::string text;
  std::uint32_t color;
  bool operator==(const DrawText&) const = default;
};
struct LaDrawing {
  std::vector<DrawLine> lines;
  std::vector<DrawText> texts;
};

class LogicView {
 public:
  LogicView(Unit& unit, Host& host) : unit_(unit), host_(host) {}

  // What the window shows and holds.
  LaSampleStore LaSamples{};
  std::string STIME = "1";
  bool pos = true;  // Option1 "POS"; Option2 "NEG" is its opposite
  bool MAG_Check = false;
  std::uint32_t shape2 = kLaReadyColor;
  std::string Text1;
  std::string Text3;
  std::int16_t LaPatternLength = 64;
  bool extended = false;
  int width = kLaWidth;
  LaDrawing drawing;
  // Period byte and edge of the last capture, for the exports.
  std::uint8_t last_period = 1;
  bool last_positive = true;
  LaContent content = LaContent::kNothing;
  // Below the controls: what the store holds, or what EXPORT saved.
  std::string Label_note;

  // Drawing state shared by SAMPLEDSP and DRAWPIC.
  int LaCursorX = 0;
  int LaRunStartX = 0;
  int LaHighY = 700;
  int LaLowY = 1200;
  float LaSampleStep = 10;
  static constexpr int LaHighBase = 800;
  static constexpr int LaLowBase = 1300;
  static constexpr int LaGridPitch = 100;
  static constexpr int LaOriginX = 100;

  void Form_Load();
  // TRIG. `paint` runs once the capture lamp is orange, before any packet.
  void Command7_Click(const std::function<void()>& paint = {});
  void Command9_Click();   // CLEAR
  void Command25_Click();  // DATA SET
  void Command10_Click();  // SAMPLE DISPLAY
  void Option1_Click() { pos = true; }
  void Option2_Click() { pos = false; }
  void MAG_Check_Click(bool checked);
  void extend_Click();
  // Saves a capture as VCD or CSV, by the name's extension or else the
  // chosen filter; refuses a failed capture and a store that holds none,
  // and marks the DATA SET pattern as what it is.
  void Export_Click();
  void SAMPLEDSP();
  void DRAWPIC(const LaSampleStore& samples);

  // The samples now in the store, 0..479, as levels.
  std::vector<bool> samples() const;

 private:
  void line(double x1, int y1, double x2, int y2, std::uint32_t color);
  void set_content(LaContent held);
  Unit& unit_;
  Host& host_;
};

}  // namespace zenta
