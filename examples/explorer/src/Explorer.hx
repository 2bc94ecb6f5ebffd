import Button.ButtonStyle;
import corvane.CorvaneClient;
import corvane.Entry;
import corvane.Failure;
import flash.Lib;
import flash.display.Sprite;
import flash.display.StageAlign;
import flash.display.StageScaleMode;
import flash.events.Event;
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

  /** Of what the list and the preview share. **/
  static inline final LIST_PART = 0.55;

  final client:CorvaneClient;
  final sidebar:Sidebar;
  final pathBar:PathBar;
  final list:FileList;
  final preview:Preview;
  final status:StatusBar;
  final work:FileWork;
  final questions:Questions;
  final refreshButton:Button;
  final onSelection:Array<Button> = [];
  var directory = "";
  var user = "Connected";

  /** The key that is down: one that repeats itself opens nothing twice. **/
  var held:UInt = 0;

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
    sidebar = new Sidebar(host + ":" + port);
    pathBar = new PathBar();
    list = new FileList();
    preview = new Preview(client);
    status = new StatusBar();
    questions = new Questions(this, work, list.has);
    for (part in ([sidebar, pathBar, list, preview, status] : Array<Sprite>))
      addChild(part);
    addSquare("Up", Up, () -> open(Names.parent(directory))).x = LEFT + GAP;
    refreshButton = addSquare("Refresh", Refresh, () -> open(directory));
    addTools();
    arrange();
    pathBar.onOpen = path -> open(path);
    list.onSelect = select;
    list.onOpen = enter;
    preview.onOpen = enter;
    Lib.current.stage.addEventListener(KeyboardEvent.KEY_DOWN, onKey);
    Lib.current.stage.addEventListener(KeyboardEvent.KEY_UP, event -> held = 0);
    Lib.current.stage.addEventListener(Event.RESIZE, event -> arrange());
    Automation.offer(Lib.current.stage, state);
    begin(parameters.dir);
  }

  /** Fills the window. **/
  function arrange():Void {
    scaleX = scaleY = Window.scale();
    var width = Window.width();
    var height = Window.height();
    graphics.clear();
    graphics.beginFill(Theme.PAGE);
    graphics.drawRect(0, 0, width, height);
    graphics.endFill();
    var right = width - GAP;
    var left = LEFT + GAP;
    var boxes = height - StatusBar.HEIGHT - TOP - 10;
    var listWidth = Math.round((right - left - 12) * LIST_PART);
    sidebar.resize(height);
    pathBar.place(left + 42, 14, right - left - 84);
    refreshButton.x = right - 34;
    list.place(left, TOP, listWidth, boxes);
    preview.place(left + listWidth + 12, TOP, right - left - listWidth - 12, boxes);
    status.place(LEFT, height - StatusBar.HEIGHT, width - LEFT);
    questions.resize();
  }

  function addTools():Void {
    var x:Float = LEFT + GAP;
    var add = (title, glyph, gap:Int, onClick) -> {
      var button = new Button(title, glyph, ButtonStyle.TOOL, 0, 32, onClick);
      button.x = x + gap;
      button.y = 60;
      x = button.x + button.width + 8;
      addChild(button);
      return button;
    };
    add("New folder", FolderPlus, 0, () -> questions.newDirectory(directory));
    add("New file", FilePlus, 0, () -> questions.newFile(directory));
    onSelection.push(add("Rename", Pencil, 12, () -> questions.newName(directory, list.selected)));
    onSelection.push(add("Copy", Copies, 0, () -> questions.copy(directory, list.selected)));
    onSelection.push(add("Delete", Bin, 0, () -> questions.deletion(directory, list.selected)));
    enableTools();
  }

  function addSquare(title:String, glyph, onClick:() -> Void):Button {
    var button = new Button(title, glyph, ButtonStyle.TOOL, 34, 34, onClick, true);
    button.y = 14;
    addChild(button);
    return button;
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
      sidebar.addTool("Registry", Key, () -> questions.registry(client));
      sidebar.addTool("Screen", Screen, () -> questions.screen(client));
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

  /** A link to a directory is listed like a file: whatever can be listed is opened as a directory. **/
  function enter(entry:Entry):Void {
    var path = Names.join(directory, entry.name);
    if (entry.isDirectory()) {
      open(path);
      return;
    }
    client.listDir(Names.join(path, ""), outcome -> {
      if (outcome.ok)
        open(path);
      else
        work.open(path, text -> status.show(text, false));
    });
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

  function onKey(event:KeyboardEvent):Void {
    if (questions.isOpen())
      return;
    var repeated = event.keyCode == held;
    held = event.keyCode;
    switch (event.keyCode) {
      case Keyboard.UP:
        list.move(-1);
      case Keyboard.DOWN:
        list.move(1);
      case Keyboard.ENTER:
        if (list.selected != null && !repeated)
          enter(list.selected);
      case Keyboard.DELETE:
        if (list.selected != null)
          questions.deletion(directory, list.selected);
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
      dialog: questions.isOpen()
    };
  }
}
