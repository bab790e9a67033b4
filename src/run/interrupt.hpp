#pragma once
// Operator interrupts (SIGINT, SIGTERM) during the conversion: the first one only raises a flag
// that the packet loop checks between packets, so the run finishes what it converted; a second
// one ends the process at once by the default action.
namespace lm {

void interrupt_arm();
// Restores the handlers in force before interrupt_arm() and lowers the flag.
void interrupt_disarm();
bool interrupted();

}  // namespace lm
