#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include "oxqrpc_export.h"

class oxServiceList;

/// The main process's end of the connections to secondary processes.
///
/// What is registered here is offered to every secondary process that connects. Their calls
/// arrive as calls of its slots, and what it signals reaches all of them.
///
/// A local socket is open to the user alone, and who may connect over TCP may call everything. What
/// is no call, with the arguments that the slot takes, ends its connection and gives one line on
/// standard error: "oxQRPCServer: what a connection sent is no call, it was ended". A packet is 256 MB
/// at most. A secondary process that leaves 256 MB unread, because it is stopped, loses its connection
/// too: "oxQRPCServer: a connection does not read what it is sent, it was ended". Nothing is done
/// against a peer that means harm with calls: that sends without end, or lists within lists deep
/// enough for the stack.
///
/// One thread only. A slot may process events, also in a loop of its own: other secondary processes
/// are served meanwhile, the one that called is served again when the slot has returned.
class OXQRPC_EXPORT oxQRPCServer : public QObject
{
    Q_OBJECT

public:
    explicit oxQRPCServer(QObject *parent = nullptr);
    /// Ends all connections. Not to be called by a slot of a service.
    ~oxQRPCServer() override;

    /// Starts to accept connections. Once for each server.
    ///
    /// @param address "local:name": a local socket in the folder for temporary files, open to this
    ///                user alone; what a process that died has left there is replaced.
    ///                "tcp://host:port": an IP address or "localhost", which also stands for no
    ///                host; port 0 takes a free one
    /// @return false when that is not possible, errorString() says why; nothing is printed
    bool listen(const QUrl &address);

    /// Where it listens, with the port that was taken; empty before listen().
    QUrl address() const;

    /// Why the last listen() failed.
    QString errorString() const;

    /// Offers @p service to the secondary processes, under its interface class: the first class
    /// from its own upwards that declares Q_CLASSINFO("RemoteObject Type", "its name").
    /// Its public slots can be called and its signals are sent as that class declares them.
    /// Types of arguments and results have to be known to the meta-type system, with stream
    /// operators. Enumerations do not travel.
    ///
    /// Not owned. A service that is deleted is no longer offered.
    ///
    /// @return false for an object without interface class, or when that class declares
    ///         enumerations (Q_ENUM), or when another of the same is there
    bool registerService(QObject *service);

private:
    void updateServiceList();
    bool listenLocally(const QUrl &address);
    bool listenOnTcp(const QUrl &address);
    template<class Server>
    void acceptFrom(Server *server);
    bool fail(const QString &reason);

    oxServiceList *m_list;
    QList<QObject *> m_services;
    QUrl m_address;
    QString m_errorString;
};
