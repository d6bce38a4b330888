#pragma once
// Ctrl-C and termination while a command runs: the handler only sets a
// flag; the chip operations ask for it between their steps and end as
// after a failure, leaving programming mode and switching the target off.
namespace zenta::cli {

// SIGINT and SIGTERM set the flag from now on.
void install_interrupt_handlers();
bool interrupted();
// What the handler does; tests call it instead of raising a signal.
void request_interrupt();
void clear_interrupt();

}  // namespace zenta::cli
