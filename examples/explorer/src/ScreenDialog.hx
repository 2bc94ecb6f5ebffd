import Button.ButtonStyle;
import corvane.CorvaneClient;
import corvane.Rect;
import flash.display.Shape;
import flash.text.TextField;

/** Draws the screen and one window on it, to scale. **/
class ScreenDialog extends Dialog {
  static inline final PICTURE = 200;

  final client:CorvaneClient;
  public final titleField:TextField;
  final picture = new Shape();
  final screenLine:TextField;
  final windowLine:TextField;
  final pictureY:Float;
  var screen:Null<Rect> = null;
  var window:Null<Rect> = null;

  public function new(client:CorvaneClient) {
    super("Screen and window", 460);
    this.client = client;
    pictureY = nextY - 4;
    Theme.box(boxes.graphics, Dialog.MARGIN, pictureY, innerWidth(), PICTURE, Theme.PAGE);
    card.addChild(picture);
    nextY += PICTURE + 6;
    screenLine = addLine("screen", Theme.MUTED);
    windowLine = addLine("window", Theme.MUTED);
    nextY += 10;
    titleField = addField("Window title (empty: the Flash player)", "");
    addButtons("Refresh", ButtonStyle.PRIMARY, refresh, "Close");
  }

  function addLine(name:String, colour:Int):TextField {
    Theme.box(boxes.graphics, Dialog.MARGIN, nextY + 5, 10, 10, name == "screen" ? Theme.SIDE : Theme.ACCENT, 2);
    var line = Theme.label("", 12, colour, Dialog.MARGIN + 16, nextY);
    line.name = name;
    card.addChild(line);
    nextY += 22;
    return line;
  }

  public function refresh():Void {
    client.getScreenRect(outcome -> {
      screen = outcome.value;
      screenLine.text = outcome.ok ? 'Screen: ${screen.width} × ${screen.height}' : "No screen: the server has no display, or cvnwinfo is not beside it";
      draw();
    });
    client.getWndRect(titleField.text, outcome -> {
      window = outcome.value;
      windowLine.text = outcome.ok ? 'Window: ${window.width} × ${window.height} at ${window.x}, ${window.y}' : noWindow();
      draw();
    });
  }

  /** The answer about the screen has come before. **/
  function noWindow():String {
    return screen == null ? "No windows without a screen; the server's log says what is missing" : "There is no such window";
  }

  function draw():Void {
    var g = picture.graphics;
    g.clear();
    if (screen == null || screen.width <= 0 || screen.height <= 0)
      return;
    var scale = Math.min((innerWidth() - 32) / screen.width, (PICTURE - 32) / screen.height);
    var left = (cardWidth - screen.width * scale) / 2;
    var top = pictureY + (PICTURE - screen.height * scale) / 2;
    Theme.box(g, left - 5, top - 5, screen.width * scale + 10, screen.height * scale + 10, Theme.SIDE, 6);
    Theme.box(g, left, top, screen.width * scale, screen.height * scale, 0xB9C9EA, 2);
    if (window == null)
      return;
    var x = left + window.x * scale;
    var y = top + window.y * scale;
    Theme.card(g, x, y, window.width * scale, window.height * scale, Theme.ACCENT_DARK, 0xFFFFFF, 3);
    Theme.box(g, x, y, window.width * scale, 9, Theme.ACCENT, 3);
  }
}
