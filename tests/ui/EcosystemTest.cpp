// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Views.h"
#include "client/RemoteAccount.h"
#include "client/RemoteFleet.h"
#include "client/RemoteInstallation.h"

namespace velmora {
namespace {

constexpr Date today{815'400'000};

QVariantMap device(const QString& id, const QString& name, double secondsAgo, const QVariantMap& more = {})
{
    QVariantMap record{{"deviceID", id},
                       {"deviceName", name},
                       {"percentage", 72.9},
                       {"thermalState", "Nominal"},
                       {"lastUpdate", today.sinceReference - secondsAgo}};
    record.insert(more);
    return record;
}

QVariantMap inForce(double limit, bool acceptsCommands = true)
{
    return {{"limitInForce", limit},
            {"autoProtectInForce", true},
            {"storageModeInForce", false},
            {"acceptsCommands", acceptsCommands}};
}

/// The page in its window, over an application that does what it is asked for by the model alone.
struct Ecosystem : Views {
    Ecosystem() : Views("light")
    {
        sync->setClock([] { return today; });
        QObject::connect(&model, &RemoteModel::setWanted, [this](const QString& key, const QVariant& value) {
            model.apply({{key, value}});
        });
        QObject::connect(sync, &RemoteObject::setWanted, [this](const QString& key, const QVariant& value) {
            asked << key + "=" + value.toString();
        });
        QObject::connect(sync, &RemoteObject::operationWanted, [this](const QString& operation) {
            if (operation != "refresh") asked << operation;
        });
        for (RemoteObject* one : {static_cast<RemoteObject*>(sync), static_cast<RemoteObject*>(account)})
            QObject::connect(one, &RemoteObject::recordOperationWanted,
                             [this](const QString& operation, const QVariantMap& record) {
                                 asked << operation;
                                 sent = record;
                             });
        QObject::connect(account, &RemoteObject::operationWanted,
                         [this](const QString& operation) { asked << operation; });
        singleton<RemoteInstallation>("InstallationManager")->apply({{"isInstallationCompleted", true}});
        makeWindow("DashboardWindow");
        window->setProperty("selectedTab", "Ecosystem");
    }

    void SetUp() override
    {
        show();
        item("divider")->setProperty("position", 450); // as narrow as the page becomes, and with large type
        setTypeScale(1.5);
        draw();
    }
    void draw()
    {
        window->grabWindow(); // by then everything has its place
        expectNoTextCut(item("page"));
        for (const auto* one : below(item("page")))
            EXPECT_TRUE(!one->isVisible() || box(one).right() < 900.5) << one->metaObject()->className();
    }
    void tell(const QVariantMap& values)
    {
        sync->apply(values);
        draw();
    }
    void tellAccount(const QVariantMap& values)
    {
        account->apply(values);
        draw();
    }
    void list(const QList<QVariantMap>& devices)
    {
        tell({{"isOn", true}, {"devices", QVariant::fromValue(devices)}});
    }
    void select(const QString& id)
    {
        model.apply({{"selectedDeviceID", QStringList{id}}});
        draw();
    }
    /// Scrolls there by giving it the focus, as a person with a keyboard does.
    void clickInSight(const QString& path)
    {
        item(path)->forceActiveFocus(Qt::TabFocusReason);
        draw();
        click(path);
    }
    void type(const QString& path, const QString& text)
    {
        item(path)->forceActiveFocus(Qt::TabFocusReason);
        press(Qt::Key_A, Qt::ControlModifier);
        for (const auto letter : text) QTest::keyClick(window.get(), letter.toLatin1());
        draw();
    }
    QString text(const QString& path) const { return property(path, "text"); }
    /// What the account can be told now, by the buttons' names.
    QString choices() const
    {
        QStringList shown;
        for (const auto* one :
             {"chooseProvider", "signIn", "cancelSignIn", "checkAgain", "signOut", "changeProvider"})
            if (item(one)->isVisible()) shown << one;
        return shown.join(' ');
    }
    QString focused() const
    {
        QCoreApplication::processEvents();
        const auto* one = window->activeFocusItem();
        return one ? one->objectName() : QString();
    }
    QString asking() { return std::exchange(asked, {}).join(' '); }

    RemoteFleet* sync = singleton<RemoteFleet>("EcosystemSync");
    RemoteAccount* account = singleton<RemoteAccount>("AppleAuthManager");
    QStringList asked;
    QVariantMap sent; ///< with the last operation that takes a record
};

TEST_F(Ecosystem, ManyMachinesCostWhatIsInSightAndTheKeyboardKeepsItsPlace)
{
    QList<QVariantMap> many;
    for (int i = 0; i < 200; ++i)
        many << device("m" + QString::number(i), "Machine " + QString::number(i), 20);
    many[0]["deviceName"] = "%2 of %3";
    tell({{"deviceID", "m0"}});
    list(many);
    EXPECT_TRUE(text("listEnd").contains("first 200"));
    const auto shown = [&] {
        return std::ranges::count_if(below(item("devices")),
                                     [](auto* one) { return one->property("identifier").isValid(); });
    };
    EXPECT_LT(shown(), 20);
    EXPECT_EQ(voice("devicem0")->text(QAccessible::Name),
              "%2 of %3 (this machine): Not charging, heat: Nominal, just now, 72%");
    item("devices")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_End);
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    EXPECT_EQ(model.selectedDeviceID(), "m198");
    many.removeAt(5);
    many[150]["percentage"] = 3.0;
    list(many);
    ASSERT_TRUE(window->activeFocusItem());
    EXPECT_EQ(window->activeFocusItem()->property("identifier").toString(), "m198")
        << "though one before it has gone";
    press(Qt::Key_Tab);
    EXPECT_FALSE(window->activeFocusItem()->property("identifier").isValid())
        << "one stop, not one a machine";
    press(Qt::Key_Backtab);
    press(Qt::Key_Return);
    EXPECT_EQ(model.selectedDeviceID(), "m198") << "who looks at one again means to see it";
    EXPECT_TRUE(voice("devicem198")->state().checked);
}

TEST_F(Ecosystem, ACommandBeginsWithWhatIsInForceAndIsSentAsAWhole)
{
    tell({{"deviceID", "a"}});
    auto desk = device("b", "Desk", 20, inForce(80));
    list({device("a", "Attic", 20, inForce(90)), desk, device("c", "Cellar", 601)});
    select("b");
    EXPECT_EQ(text("inForce"), "In force: Limit 80%, Auto-Protect on, storage mode off.");
    EXPECT_FALSE(item("remove")->isVisible());
    EXPECT_EQ(text("remoteLimit/value"), "80%");
    item("remoteLimit/slider")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Home);
    clickInSight("remoteStorage");
    EXPECT_EQ(text("commandText"), "Not sent yet.");
    list({desk}); // news does not undo what a person is about
    EXPECT_EQ(text("remoteLimit/value"), "50%");
    list({}); // nor does a listing that failed
    list({desk});
    clickInSight("send");
    EXPECT_EQ(text("commandText"), "Sending …");
    EXPECT_EQ(asking(), "command");
    EXPECT_EQ(sent,
              (QVariantMap{
                  {"deviceID", "b"}, {"limit", 50.0}, {"isAutoProtectOn", true}, {"isStorageModeOn", true}}));
    desk.insert({{"remoteChargeLimit", 50.0},
                 {"remoteAppleMode", true},
                 {"isStorageModeEnabled", true},
                 {"commandTimestamp", today.sinceReference - 3}});
    list({device("a", "Attic", 20, inForce(90)), desk, device("c", "Cellar", 601)});
    EXPECT_TRUE(text("commandText").contains("sent just now")) << text("commandText").toStdString();
    EXPECT_EQ(text("remoteLimit/value"), "50%") << "what is on its way, not what is in force";

    desk.insert(inForce(80, false));
    list({device("a", "Attic", 20, inForce(90)), desk, device("c", "Cellar", 601)});
    EXPECT_FALSE(item("send")->isEnabled());
    EXPECT_TRUE(text("obstacle").contains("takes no commands"));
    select("c");
    EXPECT_FALSE(item("send")->isEnabled());
    clickInSight("remove");
    EXPECT_EQ(asking(), "removeDevice");
    EXPECT_EQ(sent, (QVariantMap{{"deviceID", "c"}}));
    list({device("d", "Low", 20, inForce(40))});
    select("d");
    EXPECT_TRUE(text("remoteLimit/caption").contains("40% there stays"));
    clickInSight("remoteStorage");
    clickInSight("send");
    EXPECT_EQ(sent.value("limit"), 40.0) << "nobody has moved it";
    item("remoteLimit/slider")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Right);
    EXPECT_EQ(text("remoteLimit/value"), "50%") << "none between";
    list({device("a", "Attic", 20, inForce(90))});
    select("a");
    EXPECT_FALSE(item("send")->isVisible());
    EXPECT_TRUE(text("obstacle").contains("Thresholds"));
    select("gone");
    EXPECT_FALSE(item("device")->isVisible());
    tell({{"isOn", false}, {"isLeaving", true}});
    EXPECT_TRUE(text("left").contains("being removed"));
    tell({{"isLeaving", false}, {"isRecordLeft", true}});
    EXPECT_TRUE(text("left").contains("ten minutes"));
}

TEST_F(Ecosystem, AServerIsTriedAndTakenByTheKeyboard)
{
    list({});
    tell({{"fault", "no-module"}});
    EXPECT_TRUE(text("problem").contains("velmora-session"));
    tell({{"fault", ""}});
    clickInSight("leave");
    clickInSight("stay");
    EXPECT_EQ(asking(), "") << "it is left on the second word";
    clickInSight("place/server");
    EXPECT_FALSE(item("place/use")->isEnabled());
    EXPECT_TRUE(text("place/testText").contains("host"));
    type("place/host/field", "records.example");
    type("place/port/field", "0");
    type("place/user/field", "ada");
    EXPECT_TRUE(text("place/testText").contains("65535"));
    type("place/port/field", "6000");
    type("place/password/field", "secret word");
    EXPECT_FALSE(property("place/password/field", "displayText").contains("secret"));
    EXPECT_EQ(voice("place/password/field")->text(QAccessible::Name), "Password");
    EXPECT_TRUE(voice("place/password/field")->state().passwordEdit);
    clickInSight("place/byCertificate");
    clickInSight("place/test");
    const QVariantMap whole{
        {"kind", "server"}, {"host", "records.example"}, {"port", qint64{6000}}, {"database", "velmora"},
        {"user", "ada"},    {"trust", "certificate"},    {"passwordFile", ""},   {"password", "secret word"}};
    EXPECT_EQ(sent, whole);
    EXPECT_EQ(text("place/testText"), "Trying …");
    tell({{"isTesting", false}, {"testResult", QStringList("password")}});
    EXPECT_EQ(text("place/testText"), "User or password is wrong.");
    type("place/password/field", "better");
    EXPECT_EQ(text("place/testText"), "") << "that was of another one";
    clickInSight("place/use");
    EXPECT_EQ(asking(), "test use");
    EXPECT_EQ(sent.value("password"), "better");
    auto taken = whole;
    taken.remove("password");
    tell({{"place", taken}});
    EXPECT_EQ(text("place/password/field"), "");
    EXPECT_TRUE(text("placeText").contains("records.example"));
    EXPECT_EQ(text("place/testText"), "In use.");
    tell({{"fault", "noone"}}); // of a newer velmora
    EXPECT_TRUE(text("place/testText").contains("log"));
    clickInSight("place/thisComputer");
    EXPECT_FALSE(item("place/host")->isVisible());
    clickInSight("place/use");
    EXPECT_EQ(sent.value("kind"), "this-computer");
}

const QVariantMap provider{
    {"issuer", "https://login.example"}, {"clientID", "velmora"}, {"parameters", "access_type=offline"}};

TEST_F(Ecosystem, TheAccountSaysWhereItStandsAndWhatCanBeDone)
{
    const QVariantMap nobody{{"isSignedIn", false},
                             {"isLoading", false},
                             {"isUnread", false},
                             {"isUnconfirmed", false},
                             {"isChecking", false},
                             {"isRevoked", false},
                             {"userDisplayName", QStringList()},
                             {"userEmail", QStringList()},
                             {"errorMessage", QStringList()},
                             {"issuer", "https://login.example"}};
    const auto many = QString("\u202eevil %1\n\u05e9 ").repeated(4'000);
    const struct {
        QVariantMap known;
        const char *choices, *says;
    } cases[] = {
        {{{"issuer", ""}}, "chooseProvider", "No identity provider"},
        {{}, "signIn changeProvider", "Nobody is signed in"},
        {{{"isLoading", true}}, "cancelSignIn changeProvider", "browser"},
        {{{"isSignedIn", true},
          {"userDisplayName", QStringList(many)},
          {"userEmail", QStringList("%1@%2")},
          {"signedInSince", QVariant::fromValue(QList<double>{today.sinceReference})}},
         "signOut changeProvider",
         "since 3 Nov 2026"},
        {{{"isUnconfirmed", true}}, "signIn checkAgain signOut changeProvider", "not confirmed"},
        {{{"isUnconfirmed", true}, {"isChecking", true}},
         "signIn checkAgain signOut changeProvider",
         "asked"},
        {{{"isUnread", true}}, "signIn checkAgain changeProvider", "not known yet"},
        {{{"isUnconfirmed", true}, {"issuer", ""}}, "chooseProvider signOut", "Without a provider"},
        {{{"isRevoked", true}}, "signIn changeProvider", "has ended"},
    };
    for (const bool isInFleet : {false, true}) {
        tell({{"isOn", isInFleet}});
        for (const auto& [known, choices, says] : cases) {
            auto whole = nobody;
            whole.insert(known);
            tellAccount(whole);
            EXPECT_EQ(this->choices(), choices) << says;
            EXPECT_TRUE(text("accountState").contains(says)) << text("accountState").toStdString();
            EXPECT_EQ(item("userMail")->isVisible(), known.contains("userEmail"));
            if (!known.contains("userEmail")) continue;
            EXPECT_EQ(text("userMail"), "%1@%2");
            EXPECT_LE(text("userName").toUtf8().size(), 203);
            EXPECT_FALSE(text("userName").contains(QChar(0x202e))) << "it turns what stands beside it";
        }
    }
    EXPECT_EQ(voice("accountState")->role(), QAccessible::AlertMessage);
    tellAccount({{"errorMessage", QStringList("The provider refused.")}});
    EXPECT_EQ(text("accountError"), "The provider refused.");
    EXPECT_EQ(voice("accountError")->role(), QAccessible::AlertMessage);
}

TEST_F(Ecosystem, AProviderIsSetAndASignInMadeByTheKeyboardAlone)
{
    item("chooseProvider")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    draw();
    ASSERT_EQ(item("provider/issuer/field"), window->activeFocusItem());
    type("provider/issuer/field", "http://login.example");
    EXPECT_TRUE(text("provider/formText").contains("https://"));
    EXPECT_FALSE(item("provider/useProvider")->isEnabled());
    type("provider/issuer/field", "https://login.example");
    EXPECT_TRUE(text("provider/formText").contains("client"));
    type("provider/client/field", "velmora");
    type("provider/parameters/field", "state=1");
    EXPECT_FALSE(item("provider/useProvider")->isEnabled()) << "that one is not a person's to set";
    type("provider/parameters/field", "access_type=offline");
    type("provider/secret/field", "open sesame");
    EXPECT_TRUE(voice("provider/secret/field")->state().passwordEdit);
    clickInSight("provider/useProvider");
    EXPECT_EQ(asking(), "use");
    auto whole = provider;
    whole.insert("clientSecret", "open sesame");
    EXPECT_EQ(sent, whole);
    EXPECT_EQ(text("provider/secret/field"), "") << "it is not kept in the window";
    EXPECT_FALSE(item("provider/useProvider")->isEnabled()) << "once is enough";
    tellAccount({{"isKeepingSecret", true}});
    EXPECT_TRUE(text("provider/formText").contains("being kept"));
    EXPECT_FALSE(item("provider/useProvider")->isEnabled());
    tellAccount({{"isKeepingSecret", false}, {"isSecretRefused", true}});
    EXPECT_EQ(focused(), "useProvider");
    EXPECT_TRUE(text("provider/formText").contains("secret store"));
    tellAccount({{"isSecretRefused", false}, {"hasClientSecret", true}});
    tellAccount(provider);
    EXPECT_FALSE(item("provider")->isVisible());
    EXPECT_EQ(focused(), "signIn");

    press(Qt::Key_Return);
    EXPECT_EQ(asking(), "signIn");
    tellAccount({{"isLoading", true}});
    EXPECT_EQ(focused(), "cancelSignIn");
    EXPECT_TRUE(voice("cancelSignIn")->text(QAccessible::Description).contains("browser"));
    press(Qt::Key_Space);
    tellAccount({{"isLoading", false}, {"isUnconfirmed", true}});
    clickInSight("checkAgain");
    clickInSight("signOut");
    EXPECT_EQ(asking(), "cancelSignIn checkAgain signOut");

    clickInSight("changeProvider");
    EXPECT_EQ(text("provider/client/field"), "velmora");
    EXPECT_EQ(item("provider/issuer/field")->property("cursorPosition"), 0) << "its beginning is in sight";
    EXPECT_FALSE(item("provider/useProvider")->isEnabled()) << "it is in use";
    type("provider/client/field", "velmora"); // what is below is in sight then, too
    EXPECT_TRUE(text("provider/warning").contains("or none, signs you out"));
    type("provider/secret/field", "sesame");
    clickInSight("provider/useProvider");
    for (const bool isKeeping : {true, false}) tellAccount({{"isKeepingSecret", isKeeping}});
    EXPECT_EQ(text("provider/formText"), "In use.");
    EXPECT_EQ(focused(), "close");
    clickInSight("provider/useNone");
    EXPECT_EQ(sent, (QVariantMap{{"issuer", ""}, {"clientID", ""}, {"parameters", ""}}));
    tellAccount(sent);
    EXPECT_EQ(choices(), "chooseProvider signOut");
}

} // namespace
} // namespace velmora
