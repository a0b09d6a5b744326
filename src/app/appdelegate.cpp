#include "app/appdelegate.h"

#include "store/config.h"

AppDelegate::AppDelegate(QObject* parent)
    : QObject(parent)
    , m_config(std::make_unique<Config>())
{
}

AppDelegate::~AppDelegate() = default;
