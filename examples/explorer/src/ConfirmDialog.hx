import Button.ButtonStyle;

/** Asks before something is lost. **/
class ConfirmDialog extends Dialog {
  public function new(title:String, text:String, action:String, done:() -> Void) {
    super(title, 360);
    addMessage(text);
    addButtons(action, ButtonStyle.DANGER, () -> {
      close();
      done();
    });
  }
}
