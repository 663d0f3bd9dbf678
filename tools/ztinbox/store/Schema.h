#pragma once

#include <cstddef>

#include "tools/ztinbox/store/Database.h"

namespace zt::inbox {

/// Makes the database ready for use: sets how it is written, creates the tables of a new one and
/// looks whether an older one is whole. Throws DatabaseFault: it is no database, it is damaged, it
/// belongs to another program, a newer inbox wrote it.
void prepareForWriting(Database& database);

/// The same for a further connection that only reads.
void prepareForReading(Database& database);

/// Forgets all reports at once, which is quicker than one after another.
void deleteEverything(Database& database);

/// Waits until the disk has all that was committed: from then on it survives a power failure too.
/// Outside of a transaction.
void saveNow(Database& database);

/// Gives the file's free room back to the disk, as far as that can be done now.
void shrink(Database& database);

}  // namespace zt::inbox
