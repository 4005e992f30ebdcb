#include "kamdiinterfaceblocker.h"

#include <atomic>

namespace {
std::atomic<int> g_blockers{0};
} // namespace

KAMdiInterfaceBlocker::KAMdiInterfaceBlocker()
{
    ++g_blockers;
}

KAMdiInterfaceBlocker::~KAMdiInterfaceBlocker()
{
    --g_blockers;
}

bool KAMdiInterfaceBlocker::isBlocked()
{
    return g_blockers.load() > 0;
}
