#pragma once

#include <QList>
#include <QObject>

#include "oxqrpc_export.h"

/// The secondary process's end of the connection to the main process.
///
/// This implementation keeps what is registered and has no transport yet: every call answers
/// that there is no connection. GUI thread only.
class OXQRPC_EXPORT oxQRPCClient : public QObject
{
    Q_OBJECT

public:
    explicit oxQRPCClient(QObject *parent = nullptr);
    ~oxQRPCClient() override;

    /// Binds @p service to the main process's object of the same class. Not owned; the object
    /// must outlive the client. Registering an object twice keeps it twice.
    void registerService(QObject *service);

    /// Everything that was registered, in that order.
    QList<QObject *> services() const;

    /// Calls a method of the main process's object that @p service stands for.
    ///
    /// @param metaObject the class that declares the method
    /// @param index      the method's index in @p metaObject
    /// @param arguments  as for Qt's meta-call: the place for the result, or null, then one
    ///                   pointer for each argument
    ///
    /// Without a connection the result keeps its value and one line goes to standard error:
    /// "oxQRPCClient: not connected, oxFileIOService::newFile() does nothing".
    void callMethod(QObject *service, const QMetaObject *metaObject, int index, void **arguments);

private:
    QList<QObject *> m_services;
};
