#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QQueue>
#include <QTimer>
#include <QUrl>
#include <QVariant>

#include <memory>

#include "oxqrpc_export.h"

class oxPacketGate;
class QDataStream;
class QIODevice;
class QMetaMethod;
class QRemoteObjectDynamicReplica;
class QRemoteObjectNode;
class QRemoteObjectReplica;
class oxServiceLink;
struct oxEmission;

/// The secondary process's end of the connection to the main process.
///
/// Services that are registered are bound to the main process's objects of their interface
/// classes: callMethod() calls them, and what they signal is emitted by the local service.
///
/// A main process that is not there yet is waited for, and one that went is waited for again, in
/// the background, for as long as the client exists. One that sends what is none of Qt Remote
/// Objects' packets is given up, and waited for, as well; standard error gets one line for each
/// connectToHost(): "oxQRPCClient: what answers at local:name is no main process", or, where a service
/// has properties of a type that is not registered here, or works with values of a class with Q_GADGET
/// that is not: "oxQRPCClient: what answers at local:name offers a service with the type 'Shape':
/// register it here". Where it is the main process that has not registered the type of a property, or of
/// a signal's argument: "… offers a service with the type 'Shape', which it has not registered: register it
/// there".
///
/// A main process that leaves 256 MB of calls unread is connected to anew, and the calls are lost:
/// "oxQRPCClient: the main process does not read what it is sent, the connection was ended".
///
/// A call of an operation with a result waits for it in an event loop: timers and painting go on,
/// signals of the main process are emitted, and what the user does is kept until the call has
/// ended. One without result does not wait.
///
/// Signals keep their order. The next one comes when the receivers of one have returned, or while
/// one of them runs an event loop of its own (a QEventLoop, such as a dialog's), sixteen deep at most.
///
/// GUI thread only.
class OXQRPC_EXPORT oxQRPCClient : public QObject
{
    Q_OBJECT

public:
    explicit oxQRPCClient(QObject *parent = nullptr);
    ~oxQRPCClient() override;

    /// Connects to the main process at @p address, now or as soon as it is there; ends an earlier
    /// connection. Returns at once: connected() tells the rest.
    ///
    /// @param address "local:name" or "tcp://host:port", as the main process listens
    /// @return false for what is no such address; nothing is printed
    bool connectToHost(const QUrl &address);

    /// Ends the connection; no other is made.
    void disconnectFromHost();

    /// Whether the main process is there, with all that it offers for the registered services.
    bool isConnected() const { return m_isConnected; }

    /// Runs an event loop without user input until isConnected(), at most for that long.
    bool waitForConnected(int milliseconds);

    /// How long a call waits while the main process is silent: from the call on, or from the last
    /// signal of the called service, so that a load that shows progress may take its time. 30,000
    /// milliseconds at first.
    int callTimeout() const { return m_callTimeout; }
    void setCallTimeout(int milliseconds) { m_callTimeout = milliseconds; }

    /// Binds @p service to the main process's object of the same interface class: the first class
    /// from its own upwards that declares Q_CLASSINFO("RemoteObject Type", "its name"). Not owned;
    /// an object that is deleted is forgotten. Registering an object twice keeps it twice.
    void registerService(QObject *service);

    /// Everything that was registered, in that order.
    QList<QObject *> services() const { return m_services; }

    /// Calls a method of the main process's object that @p service stands for.
    ///
    /// @param metaObject the class that declares the method
    /// @param index      the method's index in @p metaObject
    /// @param arguments  as for Qt's meta-call: the place for the result, or null, then one
    ///                   pointer for each argument
    ///
    /// All signals that the main process sent before its answer have been emitted when this
    /// returns. A call that fails leaves the result as it is, and one line goes to standard error:
    ///
    /// - "oxQRPCClient: not connected, oxFileIOService::newFile() does nothing"
    /// - "oxQRPCClient: not offered by the main process, oxFileIOService::newFile() does nothing"
    /// - "oxQRPCClient: no answer within 30000 ms from oxFileIOService::newFile()"
    /// - "oxQRPCClient: the main process does not answer, oxFileIOService::newFile() does nothing":
    ///   an earlier call had no answer in time, and nothing was heard since; so that a process that
    ///   hangs costs its time once
    /// - "oxQRPCClient: connection lost before the answer from oxFileIOService::newFile()"
    /// - "oxQRPCClient: service withdrawn before the answer from oxFileIOService::newFile()"
    /// - "oxQRPCClient: this process ends before the answer from oxFileIOService::newFile()"
    /// - "oxQRPCClient: QString instead of bool from oxFileIOService::newFile()"
    void callMethod(QObject *service, const QMetaObject *metaObject, int index, void **arguments);

Q_SIGNALS:
    /// isConnected() is true from now on. Once for each connection, and again after a restart.
    void connected();
    /// isConnected() is false from now on.
    void disconnected();

    /// A call had no answer in time; the others that wait end with it.
    void fellSilent(QPrivateSignal);
    /// The answer to the call of that number.
    void answered(qint32 serial, const QVariant &value, QPrivateSignal);

private Q_SLOTS:
    void acquireServices();

private:
    void openConnection();
    template<class Socket>
    void acceptFrom(Socket *socket);
    void startSession();
    bool isPermitted(quint16 type, QDataStream &packet);
    bool isPermittedForObject(quint16 type, QDataStream &packet);
    const QRemoteObjectReplica *replicaOf(const QString &name) const;
    void updateConnected();
    void announceConnection();
    void retry();
    QByteArray reasonOfRefusal() const;
    void loseConnection();
    void forget(QObject *service);
    void receive(const oxEmission &emission);
    void deliver();
    void deliverScheduled();
    void scheduleDelivery();
    qint32 send(const oxServiceLink *link, int slotNumber, const QMetaMethod &method, void **arguments);
    QByteArray waitFor(qint32 serial, const oxServiceLink *link, QVariant *result);
    void takeAnswer();

    QList<QObject *> m_services;
    QHash<QObject *, oxServiceLink *> m_links;
    QUrl m_address;
    QTimer m_retry;
    QIODevice *m_socket = nullptr; // or the gate that has it
    oxPacketGate *m_gate = nullptr;
    std::unique_ptr<QRemoteObjectNode> m_node;
    std::unique_ptr<QRemoteObjectDynamicReplica> m_serviceList;
    QQueue<oxEmission> m_emissions;
    qint32 m_lastSerial = 0;   // of a call
    qint32 m_answerSerial = 0; // of the answer that was taken
    QVariant m_answer;
    QByteArray m_unknownHere;  // the type that is not registered, where a packet was refused for it
    QByteArray m_unknownThere; // the same for one that the main process has not registered
    int m_callTimeout = 30000;
    bool m_isConnected = false;
    bool m_hasComplained = false;
    bool m_isSilent = false; // since a call that had no answer in time
    int m_deliveryDepth = 0;
    int m_deliveryLevel = 0; // of event loops
    bool m_isDeliveryScheduled = false;
};
