#include "tprojectmgrobserver.h"

#include "projectmgrinterface.h"

TProjectMgrObserver::~TProjectMgrObserver()
{
    ProjectMgrInterface::returnMe()->unregisterObserver(this);
}

void TProjectMgrObserver::projectCreated(const KAObject2Project*) {}
void TProjectMgrObserver::projectOpened() {}
void TProjectMgrObserver::projectClosed(const KAObject2Project*) {}
