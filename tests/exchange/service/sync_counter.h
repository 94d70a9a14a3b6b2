#pragma once

namespace zvxtest {

// How often this process has waited for the disk to hold a file or a folder, since its start.
int syncs();
int folderSyncs();

} // namespace zvxtest
