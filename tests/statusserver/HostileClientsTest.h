#pragma once

#include <QObject>

class HostileClientsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void silentClientIsDropped();
    void clientThatDoesNotReadIsDropped();
    void clientThatReadsDropByDropIsDropped();
    void clientsThatCloseHalfway();
    void silentCrowdKeepsNobodyWaiting();
    void requestInPiecesIsNotReset();
    void endlessRequestEnds();
    void noDescriptorsLeft();
    void silentClientGivesWay();
    void endWhileServing();
    void childrenInheritNoSocket();
};
