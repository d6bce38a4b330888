#pragma once
// Ctrl-C, termination and hang-up while a program runs: the handler only
// sets a flag; the chip operations ask for it at their step boundaries and
// end as after a failure, leaving programming mode and switching the
// target off. Both programs install it.
namespace zenta {

// SIGINT, SIGTERM and (where there is one) SIGHUP set the flag from now on.
void install_interrupt_handlers();
bool interrupted();
// What the handler does; tests call it instead of raising a signal.
void request_interrupt();
void clear_interrupt();

}  // namespace zenta
