#pragma once

class QAccessibleEvent;

namespace ostrelle
{

// Makes every one-line field tell assistive technology what it shows, which are dots for a secret,
// and its name, the property `accessibleName`. Qt Quick's own way (6.4) tells the secret itself to
// whoever listens on the accessibility bus, and gives such a field no name. Call it before the
// first field is made; main thread only.
void installFieldAccessibility();

// Whether the event carries what a secret field holds or held. Such events are told to nobody.
bool tellsSecret(const QAccessibleEvent &event);

} // namespace ostrelle
