#pragma once
// The panel's windows besides the main one, and what the panel asks of
// whoever keeps them: show one (made when it is not open, brought forward
// when it is), and whether one shows.
namespace zenta {

enum class WindowId {
  kHelp,
  kVersion,
  kSetup,
  kDataView,
  kEepromView,
  kErrorView,
  kEditor,
  kConverter,
  kLogicView,
  kVoltMeter,
  kFrequencyCounter,
  kEventCounter,
};

class Windows {
 public:
  virtual ~Windows() = default;
  virtual void show_window(WindowId id) = 0;
  virtual bool window_visible(WindowId id) const = 0;
};

}  // namespace zenta
