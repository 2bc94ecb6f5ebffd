import corvane.CorvaneClient;
import corvane.Entry;
import flash.display.Sprite;
import flash.text.TextField;

/** The dialogs, of which one is open at a time; most ask something before it is done. **/
class Questions {
  final owner:Sprite;
  final work:FileWork;

  /** Whether the directory that is shown has an entry of this name. **/
  final isTaken:String->Bool;

  var dialog:Null<Dialog> = null;

  public function new(owner:Sprite, work:FileWork, isTaken:String->Bool) {
    this.owner = owner;
    this.work = work;
    this.isTaken = isTaken;
  }

  public function isOpen():Bool {
    return dialog != null && dialog.parent != null;
  }

  /** After a change of the window's size. **/
  public function resize():Void {
    if (isOpen())
      dialog.resize();
  }

  public function registry(client:CorvaneClient):Void {
    var dialog = new RegistryDialog(client);
    show(dialog, dialog.pathField);
  }

  public function screen(client:CorvaneClient):Void {
    var dialog = new ScreenDialog(client);
    show(dialog, dialog.titleField);
    dialog.refresh();
  }

  /** The text of `field` is selected. **/
  function show(dialog:Dialog, field:Null<TextField> = null):Void {
    this.dialog = dialog;
    dialog.show(owner, field);
  }

  public function newDirectory(directory:String):Void {
    name("New folder", "Create", "New folder", 0, (name, text) -> work.makeDirectory(directory, name));
  }

  public function newFile(directory:String):Void {
    name("New text file", "Save", "notes.txt", 8, (name, text) -> work.writeFile(directory, name, text));
  }

  public function newName(directory:String, entry:Entry):Void {
    name("Rename", "Rename", Names.plain(entry.name), 0, (name, text) -> work.rename(directory, entry, name));
  }

  public function copy(directory:String, entry:Entry):Void {
    name("Copy", "Copy", Names.forCopy(Names.plain(entry.name)), 0, (name, text) -> work.copy(directory, entry, name));
  }

  public function deletion(directory:String, entry:Entry):Void {
    var name = Names.plain(entry.name);
    var text = entry.isDirectory() ? 'The folder "$name" and all that is in it will be removed for good.' : '"$name" will be removed for good.';
    show(new ConfirmDialog("Delete?", text, "Delete", () -> work.remove(directory, entry)));
  }

  function name(title:String, action:String, name:String, lines:Int, done:(String, String) -> Void):Void {
    var question = new NameDialog(title, action, name, lines, problem, done);
    show(question, question.nameField);
  }

  /** The server would write over a file of that name without a question. **/
  function problem(name:String):Null<String> {
    if (name == "" || name == "." || name == ".." || ~/[\/\\?*]/.match(name))
      return "A name cannot be empty or hold / \\ ? *";
    return isTaken(name) ? "There is already an entry of this name" : null;
  }
}
