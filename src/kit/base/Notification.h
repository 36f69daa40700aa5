#pragma once

// One posted event: its name, the object that posted it (compared by identity only) and its
// details.

#include <QString>
#include <QVariantMap>

struct Notification
{
    QString name;
    const void *sender = nullptr;
    QVariantMap userInfo;
};
