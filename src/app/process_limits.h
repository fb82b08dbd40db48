#pragma once

// Raises the number of descriptors that the process may hold to what the system allows at most: every connection takes
// one, and desktops start programs with 1,024. A refusal leaves the limit as it was.
void RaiseDescriptorLimit();
