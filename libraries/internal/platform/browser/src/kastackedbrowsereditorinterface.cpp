#include "kastackedbrowsereditorinterface.h"

KAStackedBrowserEditorInterface::~KAStackedBrowserEditorInterface() = default;
