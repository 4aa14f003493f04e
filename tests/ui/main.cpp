#include "ui/FieldAccessibility.h"
#include "ui/Fixture.h"
#include "ui/SymbolProvider.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QtQuickTest/quicktest.h>

Q_IMPORT_QML_PLUGIN(OstrellePlugin)

// What Qt Quick Test calls around the tests.
class Setup : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void applicationAvailable() { m_fixture = std::make_unique<Fixture>(); }

    void qmlEngineAvailable(QQmlEngine *engine)
    {
        ostrelle::installFieldAccessibility();
        engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
        engine->addImageProvider(QString::fromLatin1(ostrelle::SymbolProvider::name),
                                 new ostrelle::SymbolProvider); // the engine owns it
        engine->rootContext()->setContextProperty(QStringLiteral("fixture"), m_fixture.get());
    }

    void cleanupTestCase() { m_fixture.reset(); }

private:
    std::unique_ptr<Fixture> m_fixture;
};

int main(int argc, char **argv)
{
    // Without a screen of anybody's, drawn as the program draws.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    Setup setup;
    return quick_test_main_with_setup(argc, argv, "ui", QUICK_TEST_SOURCE_DIR, &setup);
}

#include "main.moc"
