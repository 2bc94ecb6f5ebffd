import Button.ButtonStyle;
import corvane.CorvaneClient;
import corvane.Entry;
import corvane.Failure;
import flash.Lib;
import flash.display.Sprite;
import flash.display.StageAlign;
import flash.display.StageScaleMode;
import flash.events.KeyboardEvent;
import flash.ui.Keyboard;

/**
  A file explorer for the machine on which the server runs.

  FlashVars: `host` and `port` of the server, and `dir`, the directory to begin with (the home
  directory when it is not given).
**/
class Explorer extends Sprite {
  static inline final GAP = 16;
  static inline final LEFT = Sidebar.WIDTH;
  static inline final TOP = 104;
  static inline final LIST_WIDTH = 320;

  final client:CorvaneClient;
  final sidebar:Sidebar;
  final pathBar:PathBar;
  final list:FileList;
  final preview:Preview;
  final status:StatusBar;
  final work:FileWork;
  final onSelection:Array<Button> = [];
  var directory = "";
  var user = "Connected";
  var dialog:Null<Dialog> = null;

  static function main() {
    haxe.Log.trace = (value, ?position) -> Lib.trace(value);
    Lib.current.stage.scaleMode = StageScaleMode.NO_SCALE;
    Lib.current.stage.align = StageAlign.TOP_LEFT;
    Lib.current.addChild(new Explorer());
  }

  function new() {
    super();
    var parameters:Dynamic = Lib.current.loaderInfo.parameters;
    var host = parameters.host == null ? "127.0.0.1" : parameters.host;
    var port = parameters.port == null ? 54321 : Std.parseInt(parameters.port);
    client = new CorvaneClient(host, port);
    work = new FileWork(client, refresh, text -> refreshAfter(text));

    var listHeight = Theme.HEIGHT - StatusBar.HEIGHT - TOP - 10;
    sidebar = new Sidebar(host + ":" + port);
    pathBar = new PathBar(LEFT + GAP + 42, 14, Theme.WIDTH - LEFT - 2 * GAP - 84);
    list = new FileList(LEFT + GAP, TOP, LIST_WIDTH, listHeight);
    preview = new Preview(client, LEFT + GAP + LIST_WIDTH + 12, TOP, Theme.WIDTH - LEFT - LIST_WIDTH - 2 * GAP - 12, listHeight);
    status = new StatusBar(LEFT, Theme.HEIGHT - StatusBar.HEIGHT, Theme.WIDTH - LEFT);
    graphics.beginFill(Theme.PAGE);
    graphics.drawRect(0, 0, Theme.WIDTH, Theme.HEIGHT);
    graphics.endFill();
    for (part in ([sidebar, pathBar, list, preview, status] : Array<Sprite>))
      addChild(part);
    addTools();
    pathBar.onOpen = path -> open(path);
    list.onSelect = select;
    list.onOpen = enter;
    preview.onOpen = enter;
    Lib.current.stage.addEventListener(KeyboardEvent.KEY_DOWN, onKey);
    Automation.offer(Lib.current.stage, state);
    begin(parameters.dir);
  }

  function addTools():Void {
    addSquare("Up", Up, LEFT + GAP, () -> open(Names.parent(directory)));
    addSquare("Refresh", Refresh, Theme.WIDTH - GAP - 34, () -> open(directory));
    var x:Float = LEFT + GAP;
    var add = (title, glyph, gap:Int, onClick) -> {
      var button = new Button(title, glyph, ButtonStyle.TOOL, 0, 32, onClick);
      button.x = x + gap;
      button.y = 60;
      x = button.x + button.width + 8;
      addChild(button);
      return button;
    };
    add("New folder", FolderPlus, 0, askForDirectory);
    add("New file", FilePlus, 0, askForFile);
    onSelection.push(add("Rename", Pencil, 12, askForNewName));
    onSelection.push(add("Copy", Copies, 0, askForCopy));
    onSelection.push(add("Delete", Bin, 0, askToDelete));
    enableTools();
  }

  function addSquare(title:String, glyph, x:Float, onClick:() -> Void):Void {
    var button = new Button(title, glyph, ButtonStyle.TOOL, 34, 34, onClick, true);
    button.x = x;
    button.y = 14;
    addChild(button);
  }

  /** The places are known only when the server has told them; the answers come in this order. **/
  function begin(start:Null<String>):Void {
    client.userName(outcome -> {
      if (outcome.ok && outcome.value != "")
        user = outcome.value;
    });
    client.userDir("", outcome -> {
      showConnection(outcome.failure);
      if (!outcome.ok) {
        status.show("Could not begin: " + FileWork.reason(outcome.failure), true);
        return;
      }
      addPlace("Home", Home, outcome.value);
      open(start == null || start == "" ? outcome.value : start);
    });
    client.userDir("desktop", outcome -> addPlace("Desktop", Desktop, outcome.value));
    client.tempDir(outcome -> addPlace("Temporary", Clock, outcome.value));
    client.currentDir(outcome -> {
      addPlace("Server", Server, outcome.value);
      sidebar.beginTools();
      sidebar.addTool("Registry", Key, () -> {
        var registry = new RegistryDialog(client);
        dialog = registry;
        registry.open(this);
      });
      sidebar.addTool("Screen", Screen, () -> {
        var screen = new ScreenDialog(client);
        dialog = screen;
        screen.open(this);
      });
    });
  }

  /** A machine without a desktop directory answers with an empty path. **/
  function addPlace(title:String, glyph, path:Null<String>):Void {
    if (path != null && path != "")
      sidebar.addPlace(title, glyph, Names.join(path, ""), place -> open(place));
    sidebar.showPlace(directory);
  }

  function open(path:String, select:Null<String> = null, remark:Null<String> = null, isError = false):Void {
    var target = Names.join(path, "");
    client.listDir(target, outcome -> {
      showConnection(outcome.failure);
      if (!outcome.ok) {
        status.show('Could not open "$target": ' + FileWork.reason(outcome.failure), true);
        return;
      }
      directory = target;
      pathBar.show(directory);
      sidebar.showPlace(directory);
      list.show(outcome.value, select);
      this.select(list.selected);
      status.show(remark == null ? directory : remark, isError);
    });
  }

  /** A refusal is an answer, so the connection is sound. **/
  function showConnection(failure:Null<Failure>):Void {
    var sound = failure == null || failure.kind == Failure.REFUSED;
    sidebar.showConnection(sound, sound ? user : "Not connected");
  }

  function enter(entry:Entry):Void {
    if (entry.isDirectory())
      open(Names.join(directory, entry.name));
  }

  function select(entry:Null<Entry>):Void {
    preview.show(entry, entry == null ? "" : Names.join(directory, entry.name));
    enableTools();
  }

  function enableTools():Void {
    for (button in onSelection)
      button.enabled = list.selected != null;
  }

  function refresh(remark:String, select:String):Void {
    open(directory, select, remark);
  }

  /** A command that failed half-way may have changed the directory all the same. **/
  function refreshAfter(failure:String):Void {
    open(directory, list.selected == null ? null : Names.plain(list.selected.name), failure, true);
  }

  function askForDirectory():Void {
    askForName("New folder", "Create", "New folder", 0, (name, text) -> work.makeDirectory(directory, name));
  }

  function askForFile():Void {
    askForName("New text file", "Save", "notes.txt", 8, (name, text) -> work.writeFile(directory, name, text));
  }

  function askForNewName():Void {
    var entry = list.selected;
    askForName("Rename", "Rename", Names.plain(entry.name), 0, (name, text) -> work.rename(directory, entry, name));
  }

  function askForCopy():Void {
    var entry = list.selected;
    askForName("Copy", "Copy", Names.forCopy(Names.plain(entry.name)), 0, (name, text) -> work.copy(directory, entry, name));
  }

  function askForName(title:String, action:String, name:String, lines:Int, done:(String, String) -> Void):Void {
    var question = new NameDialog(title, action, name, lines, problem, done);
    dialog = question;
    question.open(this);
  }

  /** The server would write over a file of that name without a question. **/
  function problem(name:String):Null<String> {
    if (name == "" || name == "." || name == ".." || ~/[\/\\?*]/.match(name))
      return "A name cannot be empty or hold / \\ ? *";
    return list.has(name) ? "There is already an entry of this name" : null;
  }

  function askToDelete():Void {
    var entry = list.selected;
    var name = Names.plain(entry.name);
    var text = entry.isDirectory() ? 'The folder "$name" and all that is in it will be removed for good.' : '"$name" will be removed for good.';
    dialog = new ConfirmDialog("Delete?", text, "Delete", () -> work.remove(directory, entry));
    dialog.show(this);
  }

  function onKey(event:KeyboardEvent):Void {
    if (dialog != null && dialog.parent != null)
      return;
    switch (event.keyCode) {
      case Keyboard.UP:
        list.move(-1);
      case Keyboard.DOWN:
        list.move(1);
      case Keyboard.ENTER:
        if (list.selected != null)
          enter(list.selected);
      case Keyboard.BACKSPACE:
        open(Names.parent(directory));
    }
  }

  function state():Dynamic {
    return {
      directory: directory,
      entries: list.entries.map(entry -> entry.name),
      selected: list.selected == null ? "" : list.selected.name,
      preview: preview.text(),
      status: status.text(),
      dialog: dialog != null && dialog.parent != null
    };
  }
}
