import Button.ButtonStyle;
import flash.text.TextField;

/** Asks for the name of a file or folder and, when there are `lines`, for the text of a file. **/
class NameDialog extends Dialog {
  public final nameField:TextField;

  /** `problem` says what is wrong with a name, or null; `done` gets the name and the text. **/
  public function new(title:String, action:String, name:String, lines:Int, problem:String->Null<String>, done:(String, String) -> Void) {
    super(title, lines == 0 ? 360 : 440);
    nameField = addField("Name", name);
    var textField = lines == 0 ? null : addField("Text", "", lines);
    var complaint = addMessage(" ");
    complaint.textColor = Theme.DANGER;
    nextY -= 16;
    addButtons(action, ButtonStyle.PRIMARY, () -> {
      var wrong = problem(nameField.text);
      if (wrong != null) {
        complaint.text = wrong;
        return;
      }
      close();
      // The player separates the lines of a text field with carriage returns.
      done(nameField.text, textField == null ? "" : StringTools.replace(textField.text, "\r", "\n"));
    });
  }
}
