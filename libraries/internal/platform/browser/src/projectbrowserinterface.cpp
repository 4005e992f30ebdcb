#include "projectbrowserinterface.h"

ProjectBrowserInterface::~ProjectBrowserInterface() = default;
