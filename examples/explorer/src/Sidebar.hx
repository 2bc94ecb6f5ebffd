import Button.ButtonStyle;
import Icon.Glyph;
import flash.display.Sprite;
import flash.text.TextField;

/** The dark column on the left: places, tools and the state of the connection. **/
class Sidebar extends Sprite {
  public static inline final WIDTH = 176;

  static inline final ROW = 34;
  static inline final MARGIN = 12;

  final places:Array<{path:String, button:Button}> = [];
  final address:TextField;
  final user:TextField;
  final light = new Sprite();
  var nextRow = 100.0;

  public function new(server:String) {
    super();
    addChild(Theme.label("Corvane", 17, 0xFFFFFF, 54, 14));
    addChild(Theme.label("File explorer", 11, Theme.SIDE_FAINT, 54, 36));
    heading("PLACES", 76);

    addChild(light);
    light.x = 22;
    user = Theme.label("", 12, Theme.SIDE_TEXT, 34, 0);
    address = Theme.label(server, 11, Theme.SIDE_FAINT, 34, 0);
    addChild(user);
    addChild(address);
    showConnection(false, "Connecting");
  }

  public function resize(height:Float):Void {
    var bottom = height - 56;
    graphics.clear();
    graphics.beginFill(Theme.SIDE);
    graphics.drawRect(0, 0, WIDTH, height);
    graphics.beginFill(Theme.SIDE_HOVER);
    graphics.drawRect(MARGIN, bottom, WIDTH - 2 * MARGIN, 1);
    graphics.endFill();
    mark();
    light.y = bottom + 19;
    user.y = bottom + 8;
    address.y = bottom + 26;
  }

  public function addPlace(title:String, glyph:Glyph, path:String, open:String->Void):Void {
    places.push({path: path, button: add(title, glyph, () -> open(path))});
  }

  public function beginTools():Void {
    nextRow += 16;
    heading("TOOLS", nextRow);
    nextRow += 24;
  }

  public function addTool(title:String, glyph:Glyph, open:() -> Void):Void {
    add(title, glyph, open);
  }

  /** Marks the place whose directory is shown; several places may have the same one. **/
  public function showPlace(directory:String):Void {
    var current = Lambda.find(places, place -> place.path == directory);
    for (place in places)
      place.button.style = place == current ? ButtonStyle.SIDE_CURRENT : ButtonStyle.SIDE;
  }

  /** `text` stands beside the light: the user, or what is wrong. **/
  public function showConnection(connected:Bool, text:String):Void {
    var colour = connected ? Theme.GOOD : Theme.DANGER;
    light.graphics.clear();
    light.graphics.beginFill(colour, 0.25);
    light.graphics.drawCircle(0, 0, 7);
    light.graphics.beginFill(colour);
    light.graphics.drawCircle(0, 0, 4);
    Theme.fit(user, text, WIDTH - 34 - MARGIN);
  }

  function add(title:String, glyph:Glyph, onClick:() -> Void):Button {
    var button = new Button(title, glyph, ButtonStyle.SIDE, WIDTH - 2 * MARGIN, ROW - 2, onClick);
    button.x = MARGIN;
    button.y = nextRow;
    nextRow += ROW;
    addChild(button);
    return button;
  }

  function heading(text:String, y:Float):Void {
    addChild(Theme.label(text, 10, Theme.SIDE_FAINT, MARGIN + 8, y));
  }

  /** The sign of the application: a bird that looks to the right. **/
  function mark():Void {
    var g = graphics;
    Theme.box(g, 14, 15, 32, 32, Theme.ACCENT, 8);
    g.beginFill(0xFFFFFF);
    g.moveTo(20, 40);
    g.curveTo(20, 24, 32, 23);
    g.lineTo(41, 29);
    g.lineTo(34, 30);
    g.curveTo(33, 39, 20, 40);
    g.endFill();
    g.beginFill(Theme.ACCENT);
    g.drawCircle(32.5, 26.8, 1.4);
    g.endFill();
  }
}
