import QtTest

// A test of views, each in a new world: `fixture`.
TestCase {
    when: windowShown
    visible: true
    width: 380
    height: 600

    function init() {
        fixture.reset();
    }
}
