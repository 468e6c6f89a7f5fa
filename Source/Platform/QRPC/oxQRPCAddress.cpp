#include "oxQRPCAddress.h"

#include <unistd.h>

QUrl oxQRPCAddress::ofSession(const QString &session)
{
    const QString name = session.isEmpty() ? QStringLiteral("default") : session;
    QUrl address;
    address.setScheme(QStringLiteral("local"));
    address.setPath(QStringLiteral("ox-%1-%2").arg(getuid()).arg(name));
    return address;
}
