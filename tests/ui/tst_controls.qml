import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    property int presses: 0

    name: "controls"
    height: 200

    Component {
        id: secretField

        SecretField {
            placeholderText: "Paste gateway token"
        }
    }

    Component {
        id: twoButtons

        Column {
            PushButton {
                text: "Install"
                onClicked: test.presses += 1
            }

            PushButton {
                text: "Done"
            }
        }
    }

    function test_secretsStayInTheirField() {
        const field = createTemporaryObject(secretField, test, {text: "s3cret"});
        field.selectAll();
        field.copy();
        verify(fixture.clipboard() !== "s3cret");
        const told = fixture.accessible(field);
        compare(told.name, "Paste gateway token");
        verify(told.isReachable && told.hasPlace && !told.hearsChanges);
        compare(told.state, [true, true, false, false, true, true, true, true]);
        compare(told.selected, [1, 1, 3]);
        compare([told.value, told.text], [field.displayText, field.displayText]);
        verify(!field.displayText.includes("s"));
        verify(!Items.withText(field, "Paste gateway token"));
        field.clear();
        verify(Items.withText(field, "Paste gateway token"));
        field.enabled = field.visible = false;
        compare(fixture.accessible(field).state, [true, false, true, true, true, true, true, true]);
        compare(fixture.accessible(field).selected, [0, 0, 0]);
        const within = createTemporaryObject(twoButtons, test).children[1];
        verify(fixture.accessible(createTemporaryObject(secretField, within)).isReachable);
    }

    function test_buttonsLookAsTheirKind() {
        const button = createTemporaryObject(twoButtons, test).children[0];
        const kinds = [PushButton.Bordered, PushButton.Prominent, PushButton.Destructive, PushButton.Plain];
        compare(kinds.map(kind => {
            button.kind = kind;
            const surface = button.background;
            return [button.color, surface.rest, surface.border.color, surface.border.width, button.leftPadding].join();
        }), ["#ebffffff,#0dffffff,#14ffffff,1,12", "#06201f,#0ad9d1,#14ffffff,0,12", "#ff8f89,#24ff453a,#4dff453a,1,12",
             "#ebffffff,#00000000,#14ffffff,0,4"]);
        const symbol = createTemporaryQmlObject("import Ostrelle; Symbol { name: 'stop.fill'; color: 'red' }", test);
        compare([1, symbol.width / 2].map(at => String(grabImage(symbol).pixel(at, at))), ["#ffffff", "#ff0000"]);
        compare(TextColors.legible("blue", "white", 0), Qt.color("white")); // where none can be read
    }

    // Hidden while it is disabled, a button would get the focus back when it is enabled.
    function test_aHiddenButtonHandsTheFocusOn() {
        const buttons = createTemporaryObject(twoButtons, test);
        const first = Items.withText(buttons, "Install");
        test.presses = 0;
        first.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        first.enabled = false;
        first.visible = false;
        first.enabled = true;
        keyClick(Qt.Key_Return);
        tryVerify(() => Items.withText(buttons, "Done").visualFocus);
        compare(test.presses, 1);
    }
}
