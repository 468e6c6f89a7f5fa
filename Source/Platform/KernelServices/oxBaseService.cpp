#include "oxBaseService.h"

#include <QVarLengthArray>

#include "oxQRPCClient.h"

oxBaseService::oxBaseService(QObject *parent)
    : QObject(parent)
{}

oxBaseService::~oxBaseService() = default;

void oxBaseService::initialized() {}

void oxBaseService::setClient(oxQRPCClient *client)
{
    m_client = client;
}

void oxBaseService::invokeMethod(const QMetaObject *metaObject, int index, void **arguments)
{
    if (m_client)
        m_client->callMethod(this, metaObject, index, arguments);
}

oxQRPCClient *oxBaseService::client() const
{
    return m_client;
}

bool oxBaseService::isConnected() const
{
    return m_client && m_client->isConnected();
}

void oxBaseService::callMethod(const QMetaObject &metaObject, const char *signature,
                               std::initializer_list<void *> arguments) const
{
    const int index = metaObject.indexOfMethod(signature);
    Q_ASSERT_X(index >= 0, metaObject.className(), signature);
    QVarLengthArray<void *> array(arguments.begin(), arguments.end());
    // The main process's object is called, this one does not change: so getters are const.
    const_cast<oxBaseService *>(this)->invokeMethod(&metaObject, index, array.data());
}
