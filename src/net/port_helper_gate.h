// Everything that the UPnP library reads from the network passes through here. The library takes any number of answers
// of any length for any time, and does not tell who sent them. It reads with recvfrom alone, and this program's own
// recvfrom stands in front of the system's: it counts, measures, and notes which answers name their own sender.
#pragma once

#include <string>

namespace gate {

// Also takes answers from the own machine: for a search that is confined to it.
void AcceptOwnMachine();

// An answer with this description address came from that very address, a private or link-local one.
[[nodiscard]] bool NamesItsSender(const std::string& i_descriptionUrl);

// Something was longer than limits::routerAnswer and was cut short there: not to be used.
[[nodiscard]] bool WasCutShort();

} // namespace gate
