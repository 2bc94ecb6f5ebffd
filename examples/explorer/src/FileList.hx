import corvane.Entry;
import flash.Lib;
import flash.display.Sprite;
import flash.events.MouseEvent;
import flash.text.TextField;

/** The entries of a directory, as many rows as fit, scrolled by whole rows. **/
class FileList extends Sprite {
  public var onSelect:Entry->Void = entry -> {};
  public var onOpen:Entry->Void = entry -> {};

  public var entries(default, null):Array<Entry> = [];
  public var selected(default, null):Null<Entry> = null;

  static inline final HEADER = 34;

  /** Milliseconds between the two clicks that open an entry. **/
  static inline final DOUBLE_CLICK = 450;

  final rows:Array<Row> = [];
  final heading:TextField;
  final empty:TextField;
  final thumb = new Sprite();
  var boxWidth = 0.0;
  var trackHeight = 0.0;
  var first = 0;
  var grabbed = 0.0;
  var lastClick = -DOUBLE_CLICK;

  public function new() {
    super();
    heading = Theme.label("", 11, Theme.MUTED, 14, 8);
    empty = Theme.label("This folder is empty", 13, Theme.FAINT, 0, 0);
    addChild(heading);
    addChild(empty);
    addThumb();
    addEventListener(MouseEvent.MOUSE_WHEEL, event -> scrollTo(first - event.delta));
  }

  public function place(x:Float, y:Float, width:Float, height:Float):Void {
    this.x = x;
    this.y = y;
    boxWidth = width;
    graphics.clear();
    Theme.card(graphics, 0, 0, width, height);
    graphics.beginFill(Theme.LINE);
    graphics.drawRect(1, HEADER - 1, width - 2, 1);
    graphics.endFill();
    empty.x = (width - empty.width) / 2;
    empty.y = height / 2 - 10;
    thumb.x = width - 7;
    var fitting = Std.int((height - HEADER - 4) / Row.HEIGHT);
    while (rows.length > fitting)
      removeChild(rows.pop());
    while (rows.length < fitting)
      addRow(rows.length);
    trackHeight = rows.length * Row.HEIGHT;
    scrollTo(first);
  }

  public function show(entries:Array<Entry>, select:Null<String>):Void {
    this.entries = entries;
    selected = null;
    first = 0;
    for (index => entry in entries) {
      if (Names.plain(entry.name) != select)
        continue;
      selected = entry;
      first = index - rows.length + 1;
    }
    heading.text = summary();
    empty.visible = entries.length == 0;
    scrollTo(first);
  }

  public function has(name:String):Bool {
    return Lambda.exists(entries, entry -> Names.plain(entry.name) == name);
  }

  /** Selects the entry that is `by` places further down. **/
  public function move(by:Int):Void {
    if (entries.length == 0)
      return;
    var to = selected == null ? 0 : within(entries.indexOf(selected) + by, entries.length - 1);
    select(entries[to]);
    scrollTo(within(first, to, to - rows.length + 1));
  }

  function addRow(index:Int):Void {
    var row = new Row();
    row.y = HEADER + 1 + index * Row.HEIGHT;
    row.addEventListener(MouseEvent.ROLL_OVER, event -> row.hover(true));
    row.addEventListener(MouseEvent.ROLL_OUT, event -> row.hover(false));
    row.addEventListener(MouseEvent.CLICK, event -> onClick(row.entry));
    rows.push(row);
    addChildAt(row, 0); // below the thumb
  }

  function onClick(entry:Entry):Void {
    var again = entry == selected && Lib.getTimer() - lastClick < DOUBLE_CLICK;
    lastClick = Lib.getTimer();
    if (again)
      onOpen(entry);
    else
      select(entry);
  }

  function select(entry:Entry):Void {
    selected = entry;
    scrollTo(first);
    onSelect(entry);
  }

  function scrollTo(row:Int):Void {
    first = within(row, entries.length - rows.length);
    for (index => row in rows) {
      var entry = entries[first + index];
      row.show(entry, entry != null && entry == selected, boxWidth);
    }
    drawThumb();
  }

  function addThumb():Void {
    thumb.buttonMode = true;
    addChild(thumb);
    thumb.addEventListener(MouseEvent.MOUSE_DOWN, event -> {
      grabbed = mouseY - thumb.y;
      stage.addEventListener(MouseEvent.MOUSE_MOVE, onDrag);
      stage.addEventListener(MouseEvent.MOUSE_UP, onDrop);
    });
  }

  function onDrag(event:MouseEvent):Void {
    scrollTo(Math.round((mouseY - grabbed - HEADER) / trackHeight * entries.length));
  }

  function onDrop(event:MouseEvent):Void {
    stage.removeEventListener(MouseEvent.MOUSE_MOVE, onDrag);
    stage.removeEventListener(MouseEvent.MOUSE_UP, onDrop);
  }

  function drawThumb():Void {
    thumb.visible = entries.length > rows.length;
    if (!thumb.visible)
      return;
    var height = Math.max(24, trackHeight * rows.length / entries.length);
    thumb.y = HEADER + 2 + (trackHeight - height - 4) * first / (entries.length - rows.length);
    thumb.graphics.clear();
    Theme.box(thumb.graphics, 0, 0, 4, height, 0xC4CCDA, 2);
  }

  function summary():String {
    var folders = Lambda.count(entries, entry -> entry.isDirectory());
    return count(folders, "folder") + ", " + count(entries.length - folders, "file");
  }

  static function count(number:Int, what:String):String {
    return number + " " + what + (number == 1 ? "" : "s");
  }

  static function within(value:Int, highest:Int, lowest = 0):Int {
    return Std.int(Math.max(Math.max(lowest, 0), Math.min(value, highest)));
  }
}
