import QtQuick
import Ostrelle
import "items.js" as Items

ViewTest {
    id: test

    name: "CronView"

    Component {
        id: cronView

        CronView {
            id: view

            width: 380
            height: 600
            viewModel: fixture.models.makeCron(view)
        }
    }

    function write(jobs: var): void {
        fixture.write(".ostrelle/ostrelle-cron-tracker.json", JSON.stringify({version: 1, updated: "", jobs: jobs}));
    }

    function loadedView(jobs: var): Item {
        write(jobs);
        const view = createTemporaryObject(cronView, test);
        tryCompare(view.viewModel, "isLoading", false);
        tryVerify(() => jobs.every(each => Items.withText(view, each.name)));
        return view;
    }

    function job(changes: var): var {
        return Object.assign({id: "1", name: "Nightly", schedule: "every 5m", status: "green",
                              enabled: true}, changes);
    }

    function test_aDisabledJobSaysSo() {
        const view = loadedView([job({enabled: false, lastRun: "yesterday", nextRun: "never"})]);
        compare(told(view), "CRON:teal|Scheduled Jobs|0/1, active jobs:green|Refresh^|<arrow.clockwise>~|Nightly, DISABLED, every 5m, Last: "
            + "yesterday, Next: never|:red|:grey|#bcbcbf|<clock.arrow.circlepath>~|~|~|<clock>~|~");
        verify(!Items.visibleItems(view).some(each => each.policy !== undefined)); // no scroll bar
    }

    function test_anyNameIsOneLine() {
        compare(Texts.oneLine(" a\nb\u0007 " + "😀".repeat(99)), "a b " + "😀".repeat(48) + "…");
        compare(Texts.oneLine("x" + "😀".repeat(99)), "x" + "😀".repeat(49) + "…");
        const view = loadedView([job(), job({id: "2", name: "a\nb".repeat(1000)})]);
        const cards = Items.visibleItems(view).filter(each => each.summary !== undefined);
        const cut = Items.visibleItems(cards[1]).find(each => each.truncated);
        compare([cards[1].height, cut.Accessible.name, cut.help.children[0].isShown], [cards[0].height, Texts.help(cards[1].name), false]);
        const helps = () => Items.texts(Window.window.contentItem).includes(Texts.help(cards[1].name));
        mouseMove(cut);
        tryVerify(helps);
    }

    function test_unfoldsThePayload() {
        const view = loadedView([job({id: undefined, payload: "Say good night"}),
                                 job({name: "One", payload: "a"}), job({name: "Twin", payload: "b"})]);
        verify(!Items.withText(view, "Payload") && Items.symbol(view, "chevron.right"));
        mouseClick(Items.withText(view, "Nightly"));
        Items.withText(view, "One").clicked();
        tryVerify(() => Items.withText(view, "Say good night") && Items.withText(view, "a"));
        const line = "|:green|:green|#59da79|<clock.arrow.circlepath>~|~|<chevron.";
        compare(told(view).replace(/^.*?Nightly/, ""), ", GREEN, every 5m, expanded" + line + "down>~|()|Payload~|Say good night|One, GREEN, every "
            + "5m, expanded" + line + "down>~|()|Payload~|a|Twin, GREEN, every 5m, "
            + "collapsed" + line + "right>~|()"); // without "b", which has the same id
        view.viewModel.load(); // which gives the job another id
        tryCompare(view.viewModel, "isLoading", false);
        verify(Items.withText(view, "Say good night") && Items.withText(view, "a"));
        Items.withText(view, "One").clicked();
        tryVerify(() => !Items.withText(view, "a"));
        verify(Items.withText(view, "Say good night"));
        Items.withText(view, "Twin").clicked();
        for (const payload of ["c", "d"]) { // the first one's; then no id is another than before
            write([job({name: "One", payload: payload}), job({name: "Twin", payload: payload + "!"})]);
            view.viewModel.load();
            tryVerify(() => Items.withText(view, payload + "!"));
        }
        verify(!Items.withText(view, "d"));
    }

    function test_emptyOrBroken() {
        verify(Items.withText(createTemporaryObject(cronView, test), "Loading…"));
        const view = loadedView([]);
        verify(Items.withText(view, "No cron jobs configured yet."));
        fixture.write(".ostrelle/ostrelle-cron-tracker.json", "noise");
        mouseClick(Items.withText(view, "Refresh"));
        const isTold = () => /~\|Cron data unreadable: [^|]+\|<exclamation[^|]+:yellow\|No cron jobs configured yet\.~/.test(told(view));
        tryVerify(isTold);
        mouseClick(Items.withText(view, "Refresh"));
        tryVerify(isTold);
        keyClick(Qt.Key_Tab); // there is nowhere else to go
        compare(Window.window.activeFocusItem.text, "Refresh");
    }
}
