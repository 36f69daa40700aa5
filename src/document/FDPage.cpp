#include "FDPage.h"

#include <QUuid>

const QString &FDPage::uuid() const
{
    if (!m_isUUIDInited) {
        m_uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
        m_isUUIDInited = true;
    }
    return m_uuid;
}
