#include "tprocessprogressinterface.h"

TProcessProgressInterface::~TProcessProgressInterface() = default;
