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
                symbol: "xmark"
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
        verify(told.isReachable && told.hasPlace && !told.hearsChanges && field.selectByMouse);
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
        const plain = fixture.accessible(createTemporaryQmlObject("import Ostrelle; LineField {}", test));
        verify(plain.hearsChanges && !plain.state[6]);
    }

    function test_buttonsLookAsTheirKind() {
        const button = createTemporaryObject(twoButtons, test).children[0];
        const kinds = [PushButton.Bordered, PushButton.Prominent, PushButton.Destructive, PushButton.Plain];
        compare(kinds.map(kind => {
            button.kind = kind;
            const [surface, row] = [button.background, button.contentItem.children[0]];
            return [button.color, surface.rest, surface.border.color, surface.border.width, button.leftPadding, button.font.weight, row.symbolSpace].join();
        }), ["#ebffffff,#0dffffff,#14ffffff,1,12,500,19", "#06201f,#0ad9d1,#14ffffff,0,12,600,19",
             "#ff8f89,#24ff453a,#4dff453a,1,12,500,19", "#ebffffff,#00000000,#14ffffff,0,4,500,19"]);
        const symbol = createTemporaryQmlObject("import Ostrelle; Symbol { name: 'stop.fill'; color: 'red' }", test);
        compare([1, symbol.width / 2].map(at => String(grabImage(symbol).pixel(at, at))).concat(symbol.Accessible.ignored), ["#ffffff", "#ff0000", true]);
        compare([["blue", "white"], ["yellow", "black"]].map(each => String(TextColors.legible(...each, 0))), ["#ffffff", "#ffff00"]);
    }

    // Hidden while it is disabled, a button would get the focus back when it is enabled.
    function test_aHiddenButtonHandsTheFocusOn() {
        const buttons = createTemporaryObject(twoButtons, test);
        const first = Items.withText(buttons, "Install");
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
