import Button.ButtonStyle;
import flash.display.Sprite;

/** The directory's path as a row of buttons, one for each directory on the way. **/
class PathBar extends Sprite {
  static inline final HEIGHT = 34;

  public var onOpen:(directory:String) -> Void = directory -> {};

  final crumbs = new Sprite();
  var barWidth = 0.0;
  var directory = "";

  public function new() {
    super();
    addChild(crumbs);
  }

  public function place(x:Float, y:Float, width:Float):Void {
    this.x = x;
    this.y = y;
    barWidth = width;
    graphics.clear();
    Theme.card(graphics, 0, 0, width, HEIGHT);
    if (directory != "")
      show(directory);
  }

  /** Leaves out directories at the front when there is no room for all. **/
  public function show(directory:String):Void {
    this.directory = directory;
    crumbs.removeChildren();
    var at = barWidth - 6;
    var first = true;
    var path = directory;
    while (true) {
      var crumb = makeCrumb(path, first);
      at -= crumb.width;
      if (at < (path == "/" ? 3 : 30))
        break;
      crumb.x = at;
      crumbs.addChild(crumb);
      if (path == "/" || path == "")
        break;
      at -= 12;
      crumbs.addChild(new Icon(Chevron, Theme.FAINT, at - 2, HEIGHT / 2 - 8));
      first = false;
      path = Names.parent(path);
    }
    alignLeft();
  }

  function makeCrumb(path:String, last:Bool):Button {
    var plain = Names.plain(path);
    var title = path == "/" ? "/" : plain.substr(plain.lastIndexOf("/") + 1);
    var crumb = new Button(title, null, last ? ButtonStyle.CRUMB_LAST : ButtonStyle.CRUMB, 0, HEIGHT - 6, () -> onOpen(path));
    crumb.name = "crumb " + title;
    crumb.y = 3;
    return crumb;
  }

  function alignLeft():Void {
    crumbs.x = 0;
    crumbs.x = 3 - crumbs.getBounds(this).left;
  }
}
