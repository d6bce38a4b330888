#pragma once
// A program the panel started and watches: the assembler or the C compiler
// of a tool run. The platform starts it without a shell; the run polls it
// from its timer ticks, so the panel stays responsive while it works.
#include <string>

namespace zenta {

class ToolProcess {
 public:
  virtual ~ToolProcess() = default;
  // True once the program has ended (or crashed). Never blocks.
  virtual bool finished() = 0;
  // Its exit status once finished; a crash counts as -1.
  virtual int exit_status() const = 0;
  // What it printed on its standard output and error so far.
  virtual std::string output() = 0;
  // Ends it at once; the run gave up waiting.
  virtual void kill() = 0;
};

}  // namespace zenta
