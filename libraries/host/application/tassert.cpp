#include "tassert.h"

#include "messageloggerinterface.h"

bool t_assert(const char* expression, const char* file, int line, bool flag)
{
    Q_UNUSED(flag);
    MessageLoggerInterface::Error(QStringLiteral("Assertion failed: \"%1\" in %2 at line %3")
                                      .arg(QString::fromUtf8(expression), QString::fromUtf8(file))
                                      .arg(line));
    return false;
}
