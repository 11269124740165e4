
class VelmoraExtension {
    enable() {
        this._indicator = show();
    }

    disable() {
        hide(this._indicator);
        this._indicator = null;
    }
}

function init() {
    ExtensionUtils.initTranslations();
    return new VelmoraExtension();
}
