
export default class VelmoraExtension extends Extension {
    enable() {
        this._indicator = show();
    }

    disable() {
        hide(this._indicator);
        this._indicator = null;
    }
}
