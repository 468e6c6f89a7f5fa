#pragma once

#include <QString>
#include <QUrl>

#include "oxqrpc_export.h"

/// Where a main process listens: "local:name", a local socket, or "tcp://host:port".
namespace oxQRPCAddress {

/// The local socket of a session. A user may run several main processes, each in a session of its
/// own; sessions of the same name of two users are two.
///
/// @param session may be empty, which is a session, too
OXQRPC_EXPORT QUrl ofSession(const QString &session);

} // namespace oxQRPCAddress
