// The description of one rule: its name, what it is for, and its properties in order. The host shows schemas to the
// people who write rules. Constructing a schema makes it known to the host, destroying it takes it back, so a plug-in
// declares its schemas as global objects and they live exactly as long as the library is loaded.
#pragma once

#include "processor/host/export.hpp"

#include <QObject>
#include <QString>
#include <QVector>

class ZAB_SHARED_API RULE_SCHEMA : public QObject {
    Q_OBJECT

public:
    struct PROPERTY {
        QString name;
        QString description;
    };

    ~RULE_SCHEMA() override;

    QString const& name() const { return name_; }
    QString const& description() const { return description_; }
    QVector<PROPERTY> const& properties() const { return properties_; }

    /// Every schema that is alive, sorted by name. Borrowed pointers.
    static QVector<RULE_SCHEMA const*> all();

protected:
    RULE_SCHEMA(QString const& name, QString const& description);

    void add_property(QString const& name, QString const& description);

private:
    QString name_;
    QString description_;
    QVector<PROPERTY> properties_;
};
