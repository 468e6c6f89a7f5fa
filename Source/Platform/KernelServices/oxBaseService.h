#pragma once

#include <QObject>

#include <initializer_list>
#include <memory>
#include <type_traits>

#include "oxDecouplingDispatcher.h"
#include "oxkernelservices_export.h"

class oxQRPCClient;

/// The root of all services.
///
/// A service stands for an object of the main process. Its operations are virtual slots: the
/// ones that a subclass does not override call the main process through invokeMethod(), and
/// answer with a default value where there is no connection. GUI thread only.
class OXKERNELSERVICES_EXPORT oxBaseService : public QObject, public virtual oxDecouplingDispatcher
{
    Q_OBJECT

public:
    explicit oxBaseService(QObject *parent = nullptr);
    ~oxBaseService() override;

    /// Called when the service is ready for use; does nothing unless overridden.
    virtual void initialized();

    /// The connection that the service's operations go through. Not owned; must outlive the
    /// service or be replaced by null.
    virtual void setClient(oxQRPCClient *client);

    /// Calls the method through the client; does nothing without one.
    void invokeMethod(const QMetaObject *metaObject, int index, void **arguments) override;

    oxQRPCClient *client() const;

    /// Whether a call reaches the main process.
    bool isConnected() const;

protected:
    /// Calls an operation of an interface through invokeMethod().
    ///
    /// @param metaObject the interface's own meta-object, not that of a subclass
    /// @param signature  the operation's normalised signature, for example "loadFile(QString)"
    /// @return the result; a default-built one where the call was not answered
    template<class Result = void, class... Arguments>
    Result call(const QMetaObject &metaObject, const char *signature, const Arguments &...arguments) const
    {
        if constexpr (std::is_void_v<Result>) {
            callMethod(metaObject, signature, {nullptr, argument(arguments)...});
        } else {
            Result result{};
            callMethod(metaObject, signature, {&result, argument(arguments)...});
            return result;
        }
    }

private:
    template<class T>
    static void *argument(const T &value)
    {
        return const_cast<T *>(std::addressof(value));
    }

    void callMethod(const QMetaObject &metaObject, const char *signature,
                    std::initializer_list<void *> arguments) const;

    oxQRPCClient *m_client = nullptr;
};
