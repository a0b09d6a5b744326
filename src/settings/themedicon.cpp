#include "settings/themedicon.h"

#include <QWidget>

QIcon themedIcon(const QString& name, QStyle::StandardPixmap fallback, const QWidget* widget)
{
    return QIcon::fromTheme(name, widget->style()->standardIcon(fallback, nullptr, widget));
}
