import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// Which device learns, and the choice of another one.
WindowCase {
    name: "Device"

    readonly property string card: "GeForce RTX 4070"
    readonly property string driver: "llvmpipe (LLVM 15.0.6, 256 bits)"

    // 0 Automatic, 1 Processor, then these.
    function addDevices() {
        Stage.addDevice(card, "discrete");
        Stage.addDevice("Old card", "integrated", "its driver offers Vulkan 1.0, and 1.1 is needed.");
        Stage.addDevice(driver, "software");
    }
    function openMenu() {
        click("device");
        tryVerify(() => has("device-0"), limit);
        tryVerify(() => !app.devices.isListing, limit);
        settle();
    }
    function menuIsOpen(): bool {
        return has("device-0");
    }
    function closeMenu() {
        keyClick(Qt.Key_Escape);
        tryVerify(() => !menuIsOpen(), limit);
    }

    function test_theProcessorIsNamedQuietly() {
        verifySeen("Processor");
        verify(seesIcon("cpu"));
        verify(!app.devices.isListed);
    }
    function test_withoutCardsTheMenuHoldsAutomaticAndTheProcessor() {
        openMenu();
        for (const text of ["Automatic", "Works everywhere", "No graphics card was found."])
            verifySeen(text);
        compare(Stage.countItems(window.contentItem, "device-"), 2);
        verify(item("device-0").chosen);
        verify(!item("device-1").chosen);
        mouseClick(item("device-1"));
        compare(app.devices.chosenIndex, 1);
        tryVerify(() => !menuIsOpen(), limit);
    }
    function test_theMenuListsTheDevices() {
        addDevices();
        compare(item("device").text, "Processor");
        openMenu();
        for (const text of ["Automatic", card, "Graphics card", "Old card", "Cannot be used: its driver offers Vulkan 1.0, and 1.1 is needed.", driver, "Software driver, never chosen automatically"])
            verifySeen(text);
        verifyNotSeen("No graphics card was found.");
        compare(Stage.clippedTexts(window.contentItem), []);
        verify(!item("device-3").enabled);
        // Automatic has come to the card, and not to the software driver.
        compare(item("device").text, card);
        closeMenu();
    }
    function test_choiceByMouse() {
        addDevices();
        openMenu();
        mouseClick(item("device-4"));
        tryVerify(() => !menuIsOpen(), limit);
        compare(app.devices.chosenIndex, 4);
        compare(item("device").text, driver);
        openMenu();
        verify(item("device-4").chosen);
        verify(!item("device-0").chosen);
        // What is chosen stays chosen.
        mouseClick(item("device-4"));
        openMenu();
        verify(item("device-4").chosen);
    }
    function test_anUnusableDeviceCannotBeClicked() {
        addDevices();
        openMenu();
        mouseClick(item("device-3"));
        compare(app.devices.chosenIndex, 0);
    }
    function test_choiceByKeyboard() {
        addDevices();
        focusOn("device");
        keyClick(Qt.Key_Return);
        tryVerify(() => menuIsOpen() && !app.devices.isListing, limit);
        for (let i = 0; i < 3; ++i)
            keyClick(Qt.Key_Down);  // Automatic, Processor, card
        keyClick(Qt.Key_Down);  // past the one that cannot be used
        keyClick(Qt.Key_Return);
        tryVerify(() => !menuIsOpen(), limit);
        compare(app.devices.chosenIndex, 4);
        tryVerify(() => focusName() === "device", limit);
    }
    function test_returnOpensAndEscapeCloses() {
        focusOn("device");
        keyClick(Qt.Key_Return);
        tryVerify(() => menuIsOpen(), limit);
        closeMenu();
        compare(app.devices.chosenIndex, 0);
        tryVerify(() => focusName() === "device", limit);
    }
    function test_whileLearningTheChoiceRests() {
        addDevices();
        startTraining();
        compare(item("device").text, card);
        openMenu();
        verifySeen("Wait until the present run has ended, or cancel it.");
        for (const entry of ["device-0", "device-1", "device-2", "device-4"])
            verify(!item(entry).enabled, entry);
        mouseClick(item("device-1"));
        compare(app.devices.chosenIndex, 0);
        closeMenu();
        app.model.cancelTraining();
        idle();
        openMenu();
        verifyNotSeen("Wait until the present run has ended, or cancel it.");
        mouseClick(item("device-1"));
        compare(item("device").text, "Processor");
    }
    function test_theChoiceIsRemembered() {
        addDevices();
        openMenu();
        mouseClick(item("device-4"));
        restartProgram();
        compare(item("device").text, driver);
        verify(!app.devices.isListed);
    }
    function test_tip() {
        addDevices();
        hover(item("device"));
        verifySeen("Learns and generates on: Processor (chosen automatically)");
        openMenu();
        mouseClick(item("device-4"));
        tryVerify(() => !menuIsOpen(), limit);
        hover(item("train"));
        hover(item("device"));
        verifySeen("Learns and generates on: " + driver);
    }
    function test_aNoticeIsNoError() {
        const message = "The card has not enough memory. The processor is used instead.";
        Stage.refuseNetworks("The card has not enough memory.");
        tryVerify(() => has("news") && item("news").text === message, limit);
        verify(!has("errorBanner"));
        compare(item("device").text, "Processor");
        verify(seesIcon("exclamationmark.triangle.fill"));
        hover(item("device"));
        tryVerify(() => Stage.texts(window.contentItem).filter(text => text === message).length === 2, limit);
    }
    function test_aNoticeLeavesAnErrorInView() {
        scanned(3);
        generateNowhere();
        verifySeen("Choose an output folder first.");
        Stage.refuseNetworks("The card is full.");
        verifySeen("The card is full. The processor is used instead.");
        verifySeen("Choose an output folder first.");
    }
    function test_aLostDeviceEndsTheRunInTheBanner() {
        addDevices();
        startTraining();
        Stage.loseDevices();
        idle();
        verifySeen("Something went wrong");
        compare(item("errorMessage").text, "The device was lost.");
        compare(item("train").text, "Train Model");
        verify(item("train").enabled);
        verifyNotSeen("Trained and ready");
    }
    function test_assistiveTechnology() {
        addDevices();
        Stage.switchAccessibilityOn();
        settle();
        verify(Stage.accessibleNames(window.contentItem).includes("Button Device: Processor"));
        Stage.doAccessibleAction(item("device"), "Press");
        tryVerify(() => menuIsOpen() && !app.devices.isListing, limit);
        settle();
        compare(Stage.namelessControls(window.contentItem), []);
        const told = Stage.accessibleNames(window.contentItem);
        for (const name of ["MenuItem Automatic", "MenuItem Processor", "MenuItem " + card, "MenuItem " + driver])
            verify(told.includes(name), name + " is not among " + told.join(", "));
        Stage.doAccessibleAction(item("device-4"), "Press");
        compare(app.devices.chosenIndex, 4);
    }
    function test_nothingElseMovesWithTheName() {
        addDevices();
        settle();
        const others = () => Stage.places(window.contentItem).filter(place => !place.startsWith("device "));
        const before = others();
        const right = item("device").mapToItem(null, item("device").width, 0).x;
        openMenu();
        mouseClick(item("device-4"));
        tryVerify(() => !menuIsOpen(), limit);
        settle();
        compare(others(), before);
        compare(item("device").mapToItem(null, item("device").width, 0).x, right);
        Stage.refuseNetworks("The card is full.");
        tryVerify(() => app.devices.problem.length > 0, limit);
        settle();
        compare(others().filter(place => !place.startsWith("news ")), before);
    }
    function test_theMenuFits_data() {
        return [Qt.size(480, 360), Qt.size(640, 480), Qt.size(1180, 820), Qt.size(1920, 1080)].map(size => ({
                        "tag": size.width + "x" + size.height,
                        "size": size
                    }));
    }
    function test_theMenuFits(row) {
        addDevices();
        resize(row.size.width, row.size.height);
        openMenu();
        for (const entry of ["device-0", "device-4"]) {
            const place = item(entry).mapToItem(null, 0, 0);
            verify(place.x >= 0 && place.x + item(entry).width <= row.size.width, entry + " at " + place.x);
        }
        compare(Stage.clippedTexts(window.contentItem), []);
        verify(item("device-0").mapToItem(null, 0, 0).y >= 0);
        for (let i = 0; i < 4; ++i)
            keyClick(Qt.Key_Down);
        const last = item("device-4").mapToItem(null, 0, item("device-4").height).y;
        verify(last <= row.size.height, "the last entry ends at " + last);
    }
}
