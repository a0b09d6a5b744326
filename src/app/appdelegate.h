#pragma once

#include <QObject>

#include <memory>

class Config;

// Owns the shared objects for the life of the process and builds the windows.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    explicit AppDelegate(QObject* parent = nullptr);
    ~AppDelegate() override;

    Config& config() const { return *m_config; }

private:
    std::unique_ptr<Config> m_config;
};
