#pragma once

#include <QProperty>

namespace ostrelle
{

// Several properties of this scope change as one: nobody sees a state that never was.
class PropertyUpdateGroup
{
public:
    PropertyUpdateGroup() { Qt::beginPropertyUpdateGroup(); }
    ~PropertyUpdateGroup() { Qt::endPropertyUpdateGroup(); }
    Q_DISABLE_COPY_MOVE(PropertyUpdateGroup)
};

} // namespace ostrelle
