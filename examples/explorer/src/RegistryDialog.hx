import Button.ButtonStyle;
import corvane.CorvaneClient;
import flash.text.TextField;

/** Reads values of the server's registry. **/
class RegistryDialog extends Dialog {
  static final ROOTS = [
    "HKEY_CURRENT_USER",
    "HKEY_LOCAL_MACHINE",
    "HKEY_CLASSES_ROOT",
    "HKEY_USERS",
    "HKEY_CURRENT_CONFIG"
  ];

  final client:CorvaneClient;
  final roots:Array<Button> = [];
  public final pathField:TextField;
  final nameField:TextField;
  final answer:TextField;
  var hive = ROOTS[0];

  public function new(client:CorvaneClient) {
    super("Registry value", 460);
    this.client = client;
    addRoots();
    pathField = addField("Path", "Software\\Corvane\\Explorer");
    nameField = addField("Value name", "Greeting");
    Theme.card(boxes.graphics, Dialog.MARGIN, nextY, innerWidth(), 44, Theme.LINE, Theme.PAGE, 6);
    answer = Theme.label("The value appears here", 14, Theme.FAINT, Dialog.MARGIN + 12, nextY + 11);
    answer.name = "answer";
    card.addChild(answer);
    nextY += 58;
    addButtons("Read", ButtonStyle.PRIMARY, read, "Close");
  }

  function addRoots():Void {
    card.addChild(Theme.label("Root", 11, Theme.MUTED, Dialog.MARGIN - 2, nextY - 4));
    nextY += 15;
    var x = 0.0;
    for (name in ROOTS) {
      var button = new Button(name.substr("HKEY_".length), null, ButtonStyle.TOOL, 0, 28, () -> choose(name));
      if (x + button.width > innerWidth()) {
        x = 0;
        nextY += 34;
      }
      button.x = Dialog.MARGIN + x;
      button.y = nextY;
      x += button.width + 6;
      roots.push(button);
      card.addChild(button);
    }
    nextY += 44;
    choose(hive);
  }

  function choose(name:String):Void {
    hive = name;
    for (index => button in roots)
      button.style = ROOTS[index] == name ? ButtonStyle.PRIMARY : ButtonStyle.TOOL;
  }

  function read():Void {
    client.regQueryValue(hive, pathField.text, nameField.text, outcome -> {
      answer.textColor = outcome.ok ? Theme.INK : Theme.DANGER;
      var text = outcome.ok ? outcome.value : "There is no such value";
      Theme.fit(answer, text == "" ? "(empty)" : text, innerWidth() - 24);
    });
  }
}
