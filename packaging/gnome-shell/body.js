// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// What does not depend on the version of GNOME Shell. The build puts it between a head and a tail, which import what it
// uses and hand it to the shell.

const NAME = 'app.velmora.Velmora';

/** What velmora says of the battery, in words. */
const Status = Gio.DBusProxy.makeProxyWrapper(`<node><interface name="app.velmora.Status">
    <property name="sentence" type="s" access="read"/>
    <property name="icon" type="s" access="read"/>
    <property name="takesLimit" type="b" access="read"/>
</interface></node>`);

/** What a person wants of it. */
const Model = Gio.DBusProxy.makeProxyWrapper(`<node><interface name="app.velmora.Model">
    <property name="customChargeLimit" type="d" access="readwrite"/>
    <property name="isAppleRecommendedModeEnabled" type="b" access="readwrite"/>
    <property name="isTemporaryOverrideEnabled" type="b" access="read"/>
    <method name="toggleTemporaryOverride"/>
</interface></node>`);

/** A button that is lit while Auto-Protect is on; its menu has the state in words and the settings. */
const Toggle = GObject.registerClass(
class VelmoraToggle extends QuickSettings.QuickMenuToggle {
    _init() {
        super._init({toggleMode: false, visible: false});
        this._status = this._follow(Status, '/app/velmora/Status');
        this._model = this._follow(Model, '/app/velmora/Velmora');
        this._fillMenu();
        this.connect('clicked', () => this._protect(!this._model.isAppleRecommendedModeEnabled));
        this.connect('destroy', () => this._leave());
    }

    /** What comes before both have answered shows defaults for a moment; the button is not there by then. */
    _follow(Proxy, path) {
        const flags = Gio.DBusProxyFlags.DO_NOT_AUTO_START;
        const proxy = new Proxy(Gio.DBus.session, NAME, path, (_proxy, error) => error ? logError(error) : this._sync(),
            null, flags);
        const signals = ['g-properties-changed', 'notify::g-name-owner'];
        proxy.velmoraHandlers = signals.map(signal => proxy.connect(signal, () => this._sync()));
        return proxy;
    }

    _leave() {
        for (const proxy of [this._status, this._model])
            proxy.velmoraHandlers.forEach(handler => proxy.disconnect(handler));
        this._status = this._model = null;
    }

    _fillMenu() {
        this._limits = [[80, _('Limit to 80%')], [90, _('Limit to 90%')], [100, _('Full Charge (100%)')]].map(
            ([limit, text]) => {
                const item = this.menu.addAction(text, () => this._set('customChargeLimit', 'd', limit));
                return {limit, item};
            });
        this._autoProtect = new PopupMenu.PopupSwitchMenuItem(_('Auto-Protect'), false);
        this._autoProtect.connect('toggled', (_item, isOn) => this._protect(isOn));
        this.menu.addMenuItem(this._autoProtect);
        this._quickCharge = this.menu.addAction('', () => this._call('toggleTemporaryOverride'));
        this.menu.addMenuItem(new PopupMenu.PopupSeparatorMenuItem());
        this.menu.addAction(_('Launch Dashboard'), () => this._launch('dashboard'));
    }

    _sync() {
        if (!this._model) // destroyed while an answer was on its way
            return;
        this.visible = this._status.g_name_owner !== null && this._status.sentence !== null;
        if (!this.visible)
            return;
        const {sentence, icon, takesLimit} = this._status;
        const isProtected = !!this._model.isAppleRecommendedModeEnabled;
        label(this, 'Velmora', sentence);
        this.set({iconName: icon, checked: takesLimit && isProtected});
        this.menu.setHeader(icon, 'Velmora', sentence);
        const {CHECK, NONE} = PopupMenu.Ornament;
        for (const {limit, item} of this._limits)
            item.setOrnament(limit === this._model.customChargeLimit ? CHECK : NONE);
        this._autoProtect.setToggleState(isProtected);
        this._quickCharge.label.text = this._model.isTemporaryOverrideEnabled
            ? _('Stop Quick Charge') : _('Quick Charge to 100%');
        for (const item of [...this._limits.map(one => one.item), this._autoProtect, this._quickCharge])
            item.setSensitive(takesLimit);
    }

    /** Some versions of the shell tell of a switch that we set as of one that was pressed. */
    _protect(isOn) {
        if (this._status.takesLimit && isOn !== this._model.isAppleRecommendedModeEnabled)
            this._set('isAppleRecommendedModeEnabled', 'b', isOn);
    }

    _set(property, type, value) {
        this._call('org.freedesktop.DBus.Properties.Set', new GLib.Variant('(ssv)',
            [this._model.g_interface_name, property, new GLib.Variant(type, value)]));
    }

    /** A refusal is said by velmora: the button then shows what is so. */
    _call(method, parameters = null) {
        this._model.call(method, parameters, Gio.DBusCallFlags.NO_AUTO_START, -1, null, (proxy, result) => {
            try {
                proxy.call_finish(result);
            } catch (error) {
                logError(error, `velmora did not take ${method}`);
            }
            this._sync();
        });
    }

    _launch(action) {
        const app = Shell.AppSystem.get_default().lookup_app(`${NAME}.desktop`);
        Main.panel.closeQuickSettings();
        app?.app_info.launch_action(action, global.create_app_launch_context(0, -1));
    }
});

function show() {
    const indicator = new QuickSettings.SystemIndicator();
    indicator.quickSettingsItems.push(new Toggle());
    addToQuickSettings(indicator);
    return indicator;
}

function hide(indicator) {
    indicator.quickSettingsItems.forEach(item => item.destroy());
    indicator.destroy();
}
