import corvane.Entry;
import flash.display.Sprite;
import flash.text.TextField;

/** One line of the file list. It is reused for whatever entry is scrolled to its place. **/
class Row extends Sprite {
  public static inline final HEIGHT = 32;

  public var entry(default, null):Null<Entry> = null;

  final icon = new EntryIcon(13, 4, 24);
  final title = Theme.label("", 13, Theme.INK, 44, 0);
  final remark = Theme.label("", 10, Theme.FAINT, 0, 0);
  var rowWidth = 0.0;
  var selected = false;

  public function new() {
    super();
    mouseChildren = false;
    addChild(icon);
    addChild(title);
    addChild(remark);
  }

  public function show(entry:Null<Entry>, selected:Bool, width:Float):Void {
    rowWidth = width;
    this.entry = entry;
    this.selected = selected;
    visible = entry != null;
    icon.show(entry);
    if (entry == null)
      return;
    name = "row " + Names.plain(entry.name);
    remark.text = remarkOn(entry);
    remark.x = rowWidth - remark.width - 12;
    remark.y = (HEIGHT - remark.height) / 2;
    title.textColor = entry.isHidden() ? Theme.MUTED : Theme.INK;
    Theme.fit(title, Names.plain(entry.name), remark.x - title.x - 12);
    title.y = (HEIGHT - title.height) / 2;
    hover(false);
  }

  public function hover(over:Bool):Void {
    graphics.clear();
    graphics.beginFill(0, 0);
    graphics.drawRect(0, 0, rowWidth, HEIGHT);
    graphics.endFill();
    if (selected || over)
      Theme.box(graphics, 4, 1, rowWidth - 8, HEIGHT - 2, selected ? Theme.SELECTED : Theme.HOVER, 6);
    if (selected)
      Theme.box(graphics, 4, 8, 3, HEIGHT - 16, Theme.ACCENT, 1.5);
  }

  static function remarkOn(entry:Entry):String {
    if (entry.isReadOnly())
      return "read-only";
    return entry.isHidden() ? "hidden" : "";
  }
}
