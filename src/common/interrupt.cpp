#include "common/interrupt.h"

#include <atomic>
#include <csignal>

namespace zenta {

namespace {

// Lock-free, so the handler may set it.
std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void on_signal(int) {
  g_interrupted.store(true);
}

}  // namespace

void install_interrupt_handlers() {
  std::signal(SIGINT, on_signal);
  std::signal(SIGTERM, on_signal);
#ifdef SIGHUP
  // A closed terminal or a logout ends the program as Ctrl-C does.
  std::signal(SIGHUP, on_signal);
#endif
}

bool interrupted() {
  return g_interrupted.load();
}

void request_interrupt() {
  g_interrupted.store(true);
}

void clear_interrupt() {
  g_interrupted.store(false);
}

}  // namespace zenta
