#include "instruments/logic_view.h"

#include <algorithm>
#include <cmath>

#include "common/atomic_file.h"
#include "common/file_names.h"
#include "common/number_text.h"
#include "instruments/capture_export.h"
#include "link/command_codes.h"

namespace zenta {

namespace {

// Entries the CLEAR, the load and a capture reset; DATA SET writes up to 520.
constexpr int kClearedEntries = 513;
constexpr int kUnpackedEntries = 512;
constexpr int kGridLines = 51;
constexpr int kGridTop = 50;
constexpr int kGridBottom = 1900;
constexpr int kLabelY = 1500;
// DATA SET copies its pattern five times, 64 samples apart; the last copy
// must end inside the store.
constexpr int kPatternCopies = 5;
constexpr int kPatternSpacing = 64;
constexpr int kMaxPatternLength = kLaStoreSize - 1 - (kPatternCopies - 1) * kPatternSpacing;

constexpr const char* kExportFilter = "VCD file|*.vcd|CSV file|*.csv|";

int round_twips(double x) {
  return static_cast<int>(round_half_even(x));
}

}  // namespace

PeriodByte sample_period_byte(const std::string& text) {
  const double value = round_half_even(leading_number(text));
  // Only the low 8 bits travel; values outside 32 bits keep their low bits too.
  const auto whole = static_cast<std::int64_t>(std::fmod(value, 4294967296.0));
  PeriodByte period;
  period.byte = static_cast<std::uint8_t>(whole & 0xFF);
  if (period.byte > kLaMaxPeriod) {
    period.byte = kLaMaxPeriod;
    period.rewritten = true;
  }
  return period;
}

void unpack_capture(const CaptureBytes& bytes, LaSampleStore& store) {
  for (int i = 0; i < kUnpackedEntries; ++i) store[static_cast<std::size_t>(i)] = '0';
  for (int j = 0; j < kLaUsedBytes; ++j) {
    const std::uint8_t b = bytes[static_cast<std::size_t>(kLaUsedBytes - 1 - j)];
    for (int n = 0; n < 8; ++n) {
      if (b & (1u << n)) store[static_cast<std::size_t>(8 * j + n)] = '1';
    }
  }
}

LaCapture capture_exchanges(UnitLink& link, std::uint8_t period, bool positive_edge) {
  LaCapture result;
  const std::uint64_t failures = link.failures();
  link.SENDCMD(UNIT_LA_START, period, positive_edge ? 1 : 0);
  for (int k = 0; k < 8; ++k) {
    link.SENDCMD(UNIT_LA_READ, static_cast<std::uint8_t>(k));
    for (int i = 0; i < 8; ++i) {
      result.bytes[static_cast<std::size_t>(8 * k + i)] =
          link.RxPacket[static_cast<std::size_t>(i)];
    }
  }
  result.result = link.failures() == failures ? ExchangeResult::kDone : ExchangeResult::kFailed;
  return result;
}

LaCapture capture(Unit& unit, std::uint8_t period, bool positive_edge) {
  Unit::Operation operation(unit);
  if (!operation) return {};
  return capture_exchanges(unit.link(), period, positive_edge);
}

std::vector<bool> capture_samples(const CaptureBytes& bytes) {
  LaSampleStore store{};
  unpack_capture(bytes, store);
  std::vector<bool> samples(kLaSampleCount);
  for (int i = 0; i < kLaSampleCount; ++i)
    samples[static_cast<std::size_t>(i)] = store[static_cast<std::size_t>(i)] == '1';
  return samples;
}

void LogicView::Form_Load() {
  width = extended ? kLaExtendedWidth : kLaWidth;
  Text1 = kLaDefaultPattern;
  for (int i = 0; i < kClearedEntries; ++i) LaSamples[static_cast<std::size_t>(i)] = '0';
  LaPatternLength = 64;
  pos = true;
  shape2 = kLaReadyColor;
  set_content(LaContent::kNothing);
  SAMPLEDSP();
}

// The guard is taken before the lamp turns orange and the pending events
// run, so no chip command can start in that pause and none can be running:
// TRIG is refused while one runs.
void LogicView::Command7_Click(const std::function<void()>& paint) {
  Unit::Operation operation(unit_);
  if (!operation) return;
  shape2 = kLaCaptureColor;
  if (paint) paint();
  host_.process_events();
  const PeriodByte period = sample_period_byte(STIME);
  if (period.rewritten) STIME = "100";
  last_period = period.byte;
  last_positive = pos;
  const LaCapture result = capture_exchanges(unit_.link(), period.byte, pos);
  unpack_capture(result.bytes, LaSamples);
  set_content(result.result == ExchangeResult::kDone ? LaContent::kCapture
                                                     : LaContent::kFailedCapture);
  SAMPLEDSP();
  shape2 = LaIdleColor;
}

void LogicView::Command9_Click() {
  for (int i = 0; i < kClearedEntries; ++i) LaSamples[static_cast<std::size_t>(i)] = '0';
  set_content(LaContent::kNothing);
  SAMPLEDSP();
}

// A pattern longer than the store can take five times is cut to what fits.
void LogicView::Command25_Click() {
  LaPatternLength = static_cast<std::int16_t>(static_cast<int>(Text1.size()) - 6);
  const int length = std::min<int>(LaPatternLength, kMaxPatternLength);
  for (int i = 1; i <= length; ++i) {
    const char c = Text1[static_cast<std::size_t>(i)];
    for (int copy = 0; copy < kPatternCopies; ++copy) {
      LaSamples[static_cast<std::size_t>(i + copy * kPatternSpacing)] = c;
    }
  }
  set_content(LaContent::kPattern);
  SAMPLEDSP();
}

void LogicView::Command10_Click() {
  Text3.assign(LaSamples.begin(), LaSamples.begin() + 401);
}

void LogicView::MAG_Check_Click(bool checked) {
  MAG_Check = checked;
  SAMPLEDSP();
}

void LogicView::extend_Click() {
  extended = !extended;
  width = extended ? kLaExtendedWidth : kLaWidth;
}

void LogicView::SAMPLEDSP() {
  drawing = LaDrawing{};
  LaCursorX = LaOriginX;
  LaSampleStep = MAG_Check ? LaGridPitch / 5.0f : LaGridPitch / 10.0f;
  for (int n = 0; n < kGridLines; ++n) {
    line(LaCursorX, kGridBottom, LaCursorX, kGridTop, n % 10 == 0 ? LaMajorGridColor : LaGridColor);
    LaCursorX += LaGridPitch;
  }
  for (const auto& [x, text] : {std::pair{1050, "0"}, std::pair{2050, "100"},
                                std::pair{3050, "200"}, std::pair{4050, "300"}}) {
    drawing.texts.push_back({x, kLabelY, text, LaTraceColor});
  }
  LaCursorX = LaOriginX;
  LaRunStartX = LaOriginX;
  LaHighY = LaHighBase - 100;
  LaLowY = LaLowBase - 100;
  DRAWPIC(LaSamples);
}

// One horizontal line per run of equal samples and one vertical line per
// edge; an edge between samples i and i+1 stands at the x of i+1.
void LogicView::DRAWPIC(const LaSampleStore& s) {
  bool run = false;
  const double step = LaSampleStep;
  int x = LaCursorX;
  char a = 0, b = 0;
  for (int i = 0; i < kLaSampleCount - 1; ++i) {
    a = s[static_cast<std::size_t>(i)];
    b = s[static_cast<std::size_t>(i + 1)];
    const bool level = (a == '0' || a == '1') && a == b;
    if (level) {
      if (!run) {
        LaRunStartX = x;
        run = true;
      }
    } else if (a == '0' && b == '1') {
      line(LaRunStartX, LaLowY, x + step, LaLowY, LaTraceColor);
      line(x + step, LaLowY, x + step, LaHighY, LaTraceColor);
      run = false;
      LaRunStartX = round_twips(x + step);
    } else if (a == '1' && b == '0') {
      line(LaRunStartX, LaHighY, x + step, LaHighY, LaTraceColor);
      line(x + step, LaHighY, x + step, LaLowY, LaTraceColor);
      run = false;
      LaRunStartX = round_twips(x + step);
    }
    x = round_twips(LaOriginX + (i + 1) * step);
    LaCursorX = x;
  }
  if (run && a == b && (a == '0' || a == '1')) {
    const int y = a == '1' ? LaHighY : LaLowY;
    line(LaRunStartX, y, x + step, y, LaTraceColor);
  }
}

void LogicView::Export_Click() {
  Host& host = host_;
  if (content == LaContent::kFailedCapture || content == LaContent::kNothing) {
    host.message_box(content == LaContent::kNothing
                         ? "Nothing has been captured: press TRIG first."
                         : "The last capture failed: the samples are not the input's. "
                           "Press TRIG to capture again.",
                     "EXPORT ERROR", MessageIcon::kStop);
    return;
  }
  const bool pattern = content == LaContent::kPattern;
  const SaveAnswer answer = host.save_file_choice(kExportFilter);
  if (answer.path.empty()) return;
  const std::string path = with_chosen_extension(answer.path, kExportFilter, answer.choice);
  const std::string extension = file_extension(path);
  const bool csv = extension == ".csv" || (extension != ".vcd" && answer.choice == 1);
  const std::string text = csv ? csv_text(samples(), last_period)
                               : vcd_text(samples(), last_period, last_positive, pattern);
  if (!write_file_atomically(path, text)) {
    host.message_box("Cannot write " + path, "FILE ERROR", MessageIcon::kStop);
    return;
  }
  Label_note =
      (pattern ? "Saved the DATA SET pattern, not a capture, to " : "Saved the capture to ") + path;
}

// What the store now holds, as the window says it.
void LogicView::set_content(LaContent held) {
  content = held;
  switch (held) {
    case LaContent::kNothing:
      Label_note.clear();
      break;
    case LaContent::kCapture:
      Label_note = "Capture: 480 samples, one every " +
                   fixed_text(sample_interval_us(last_period) / 1000.0, 1) + " ms, trigger " +
                   (last_positive ? "POS" : "NEG");
      break;
    case LaContent::kFailedCapture:
      Label_note = "Capture failed: the trace is not the input";
      break;
    case LaContent::kPattern:
      Label_note = "DATA SET pattern, not a capture";
      break;
  }
}

std::vector<bool> LogicView::samples() const {
  std::vector<bool> levels(kLaSampleCount);
  for (int i = 0; i < kLaSampleCount; ++i) {
    levels[static_cast<std::size_t>(i)] = LaSamples[static_cast<std::size_t>(i)] == '1';
  }
  return levels;
}

void LogicView::line(double x1, int y1, double x2, int y2, std::uint32_t color) {
  drawing.lines.push_back({round_twips(x1), y1, round_twips(x2), y2, color});
}

}  // namespace zenta
