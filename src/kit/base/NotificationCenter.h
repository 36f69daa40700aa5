#pragma once

// Synchronous broadcast of named events from a sender to the observers registered for them.
// Main thread only.

#include "Notification.h"

#include <QHash>
#include <QMetaObject>

#include <functional>
#include <memory>
#include <vector>

class QObject;

class NotificationCenter
{
public:
    using Callback = std::function<void(const Notification &)>;

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter &) = delete;
    NotificationCenter &operator=(const NotificationCenter &) = delete;

    static NotificationCenter &defaultCenter();
    // The tab kit's centre: a second instance, separate from the default one.
    static NotificationCenter &qkCenter();

    // An empty name observes every name; a null sender observes every sender. The observer is
    // only an identity used for removal. Callbacks run in registration order.
    void addObserver(
        const void *observer, const QString &name, const void *sender, Callback callback);
    // As above; the registrations go away by themselves when the observer is destroyed.
    void addObserver(QObject *observer, const QString &name, const void *sender, Callback callback);

    // Removes every registration of the observer.
    void removeObserver(const void *observer);
    // Removes the observer's registrations that match; an empty name or a null sender matches any.
    void removeObserver(const void *observer, const QString &name, const void *sender);

    // Delivers before returning. Registrations added or removed by a callback take effect for
    // the next post, except that a removed one is never called again, even later in this one.
    void post(const QString &name, const void *sender = nullptr, const QVariantMap &userInfo = {});
    void post(const Notification &notification);

private:
    struct Registration;

    void forgetIfUnobserved(const void *observer);

    std::vector<std::shared_ptr<Registration>> m_registrations;
    // Connections to QObject::destroyed of QObject observers, by observer identity.
    QHash<const void *, QMetaObject::Connection> m_destroyWatches;
    // Receiver of those connections, so that they end with this centre.
    std::unique_ptr<QObject> m_context;
};
