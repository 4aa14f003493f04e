import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    readonly property string head: "<bubble.left.fill>:teal|Quick Chat|"
    readonly property string foot: "Ask something…|~|Send|<arrow.up.circle.fill>:teal"

    name: "QuickChatPanel"
    height: 300

    Component {
        id: chatPanel

        QuickChatPanel {
            id: panel

            width: 356
            height: 240
            chatVM: fixture.models.makeChat(panel)
            gatewayURL: fixture.gatewayVM.gatewayURL
        }
    }

    function init() {
        fixture.reset();
        fixture.startGateway();
        fixture.restart();
    }

    function fieldOf(panel: Item): Item {
        return Items.visibleItems(panel).find(item => item.placeholderText === "Ask something…");
    }

    function listOf(panel: Item): Item {
        return Items.visibleItems(panel).find(item => item.contentY !== undefined);
    }

    function ask(panel: Item, reply: string) {
        fixture.answerChat(JSON.stringify({choices: [{message: {content: reply}}]}));
        fieldOf(panel).forceActiveFocus();
        keyClick(Qt.Key_Q);
        keyClick(Qt.Key_Return);
        tryCompare(panel.chatVM, "isLoading", false);
    }

    function test_whileItWaits() {
        const panel = createTemporaryObject(chatPanel, test);
        fixture.answerChat("");
        compare(told(panel), test.head + "Ask me anything…~|" + test.foot);
        panel.chatVM.input = "Still there?";
        mouseClick(Items.withText(panel, "Send"));
        keyClick(Qt.Key_X); // the field has the keyboard, and the next question can be written
        keyClick(Qt.Key_Return);
        compare(panel.chatVM.input, "x");
        compare(panel.chatVM.messages.count, 1);
        compare(told(panel), test.head + "<person.fill>:blue|You: Still there?~|Ask something…(x)|In progress|<spinner>~");
    }

    function test_lineBreaksAreSentAsTheyAre() {
        const panel = createTemporaryObject(chatPanel, test);
        ask(panel, "No");
        const all = test.head + "<person.fill>:blue|You: q~|<sparkles>:teal|Assistant: No|" + test.foot;
        tryVerify(() => told(panel) === all); // once the notification has gone
        Desktop.copy("one\ntwo");
        fieldOf(panel).forceActiveFocus();
        keyClick(Qt.Key_V, Qt.ControlModifier);
        keyClick(Qt.Key_Return);
        const words = Items.visibleItems(panel).find(each => each.content === "one\ntwo");
        mouseDoubleClickSequence(words, 5, 5);
        compare(words.selectedText, "one");
        keyClick(Qt.Key_Delete);
        compare(words.text, "one\ntwo"); // is only to be read
    }

    function test_lastMessageComesIntoView() {
        const panel = createTemporaryObject(chatPanel, test);
        const list = listOf(panel);
        for (let i = 0; i < 4; ++i) { // the fourth pushes the first out
            ask(panel, "long ".repeat(120) + i);
            tryVerify(() => list.contentY > 0 && list.atYEnd);
        }
        compare(panel.chatVM.messages.count, 6);
        panel.height -= 60;
        tryVerify(() => list.contentY === list.contentHeight - list.height);

        keyClick(Qt.Key_Up);
        tryVerify(() => !list.moving && !list.atYEnd);
        const where = list.contentY;
        panel.height -= 10;
        compare(list.contentY, where);
    }

    function test_endlessWord() {
        const panel = createTemporaryObject(chatPanel, test);
        const tells = () => Items.visibleItems(panel).some(each => each.Accessible.role === Accessible.Notification);
        const told = [tells()];
        listOf(panel).replied.connect(text => told.push(text.length, tells()));
        ask(panel, "x".repeat(20000));
        compare(told, [false, 20000, true]);
        tryVerify(() => !tells());
        verify(Items.texts(panel).includes("x".repeat(10000) + "…"));
        compare(Theme.shortened("x".repeat(10000)).length, 10000);
        Items.withText(panel, "Copy").clicked();
        compare(fixture.clipboard(), "x".repeat(20000));
    }
}
