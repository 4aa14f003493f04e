import QtQuick
import QtTest
import Ostrelle

TestCase {
    id: test

    name: "controls"
    when: windowShown
    visible: true
    width: 380
    height: 200

    Component {
        id: copyButton

        CopyButton {
            copiedText: "http://127.0.0.1:18789"
        }
    }

    Component {
        id: secretField

        SecretField {
            placeholderText: "Paste gateway token"
        }
    }

    function test_copyAnswersTheKeyboardWithACheckMark() {
        const button = createTemporaryObject(copyButton, test);
        button.forceActiveFocus();
        keyClick(Qt.Key_Return);
        compare(fixture.clipboard(), "http://127.0.0.1:18789");
        compare(button.symbol, "checkmark");
        tryCompare(button, "symbol", "doc.on.doc");
    }

    function test_secretsCannotBeCopied() {
        const field = createTemporaryObject(secretField, test, {text: "s3cret"});
        field.selectAll();
        field.copy();
        verify(fixture.clipboard() !== "s3cret");
        verify(!field.displayText.includes("s"));
    }
}
