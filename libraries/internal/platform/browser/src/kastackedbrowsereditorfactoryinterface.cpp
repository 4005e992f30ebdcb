#include "kastackedbrowsereditorfactoryinterface.h"

KAStackedBrowserEditorFactoryInterface::~KAStackedBrowserEditorFactoryInterface() = default;
