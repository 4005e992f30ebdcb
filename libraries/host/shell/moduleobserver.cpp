#include "moduleobserver.h"

// Out of line: the interface's type information lives in the host library.
ModuleObserver::~ModuleObserver() = default;
