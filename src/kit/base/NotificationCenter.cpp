#include "NotificationCenter.h"

#include "MainQueue.h"

#include <QObject>

#include <algorithm>

struct NotificationCenter::Registration
{
    const void *observer = nullptr;
    QString name;
    const void *sender = nullptr;
    Callback callback;
    bool removed = false;

    bool matches(const QString &postedName, const void *postedSender) const
    {
        return (name.isEmpty() || name == postedName) && (!sender || sender == postedSender);
    }
};

NotificationCenter::NotificationCenter()
    : m_context(std::make_unique<QObject>())
{ }

NotificationCenter::~NotificationCenter() = default;

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

NotificationCenter &NotificationCenter::qkCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::addObserver(
    const void *observer, const QString &name, const void *sender, Callback callback)
{
    Q_ASSERT(MainQueue::isMainThread());
    if (!callback)
        return;
    auto registration = std::make_shared<Registration>();
    registration->observer = observer;
    registration->name = name;
    registration->sender = sender;
    registration->callback = std::move(callback);
    m_registrations.push_back(std::move(registration));
}

void NotificationCenter::addObserver(
    QObject *observer, const QString &name, const void *sender, Callback callback)
{
    addObserver(static_cast<const void *>(observer), name, sender, std::move(callback));
    if (!observer || m_destroyWatches.contains(observer))
        return;
    const void *const identity = observer;
    // Direct, so the registrations are gone before the address can be reused.
    m_destroyWatches.insert(identity,
        QObject::connect(
            observer, &QObject::destroyed, m_context.get(),
            [this, identity] { removeObserver(identity); }, Qt::DirectConnection));
}

void NotificationCenter::removeObserver(const void *observer)
{
    removeObserver(observer, QString(), nullptr);
}

void NotificationCenter::removeObserver(
    const void *observer, const QString &name, const void *sender)
{
    Q_ASSERT(MainQueue::isMainThread());
    const auto doomed = [&](const std::shared_ptr<Registration> &registration) {
        const bool match = registration->observer == observer
            && (name.isEmpty() || registration->name == name)
            && (!sender || registration->sender == sender);
        // A delivery in progress holds its own list of registrations and checks this flag.
        if (match)
            registration->removed = true;
        return match;
    };
    std::erase_if(m_registrations, doomed);
    forgetIfUnobserved(observer);
}

void NotificationCenter::forgetIfUnobserved(const void *observer)
{
    const auto watch = m_destroyWatches.find(observer);
    if (watch == m_destroyWatches.end())
        return;
    const bool stillObserving = std::any_of(m_registrations.cbegin(), m_registrations.cend(),
        [observer](const auto &registration) { return registration->observer == observer; });
    if (stillObserving)
        return;
    QObject::disconnect(watch.value());
    m_destroyWatches.erase(watch);
}

void NotificationCenter::post(const QString &name, const void *sender, const QVariantMap &userInfo)
{
    post(Notification { name, sender, userInfo });
}

void NotificationCenter::post(const Notification &notification)
{
    Q_ASSERT_X(MainQueue::isMainThread(), "NotificationCenter::post", "main thread only");
    // Registrations made by a callback wait for the next post.
    std::vector<std::shared_ptr<Registration>> recipients;
    for (const auto &registration : m_registrations) {
        if (registration->matches(notification.name, notification.sender))
            recipients.push_back(registration);
    }
    for (const auto &registration : recipients) {
        if (!registration->removed)
            registration->callback(notification);
    }
}
