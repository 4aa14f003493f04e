#pragma once

#include <QObject>

class RequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void routing_data();
    void routing();
    void token_data();
    void token();
};
