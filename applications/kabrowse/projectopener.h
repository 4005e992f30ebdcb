#pragma once

#include <QString>

class KAObject2Project;

// Opens the project of a folder through the project manager, as the host
// would; prints the reason on standard error and returns null when the
// folder is not a project or its database is refused.
const KAObject2Project* openProjectFolder(const QString& folder, bool readOnly);
