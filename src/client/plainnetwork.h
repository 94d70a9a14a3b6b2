#pragma once

namespace plainnetwork {

// Keeps the network code from watching the devices of this machine. Called before the first network
// access manager is made, with an application there.
void leaveDevicesAlone();

} // namespace plainnetwork
