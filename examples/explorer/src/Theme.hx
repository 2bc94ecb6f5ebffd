import flash.display.Graphics;
import flash.filters.DropShadowFilter;
import flash.text.TextField;
import flash.text.TextFieldAutoSize;
import flash.text.TextFormat;

/** The look of the explorer: colours, text and the few shapes that everything is made of. **/
class Theme {
  public static inline final INK = 0x1C2333;
  public static inline final MUTED = 0x66718A;
  public static inline final FAINT = 0x98A2B8;
  public static inline final LINE = 0xE1E6EF;
  public static inline final PAGE = 0xF3F5FA;
  public static inline final CARD = 0xFFFFFF;
  public static inline final ACCENT = 0x2F6BEA;
  public static inline final ACCENT_DARK = 0x2256C6;
  public static inline final HOVER = 0xF0F4FC;
  public static inline final SELECTED = 0xDFE9FE;
  public static inline final DANGER = 0xD5405B;
  public static inline final DANGER_DARK = 0xB32D46;
  public static inline final GOOD = 0x34B87F;
  public static inline final SIDE = 0x1A2137;
  public static inline final SIDE_HOVER = 0x262F4B;
  public static inline final SIDE_SELECTED = 0x303B5E;
  public static inline final SIDE_TEXT = 0xC9D1E4;
  public static inline final SIDE_FAINT = 0x7C88AA;
  public static inline final FOLDER = 0xF6BC4F;
  public static inline final FOLDER_DARK = 0xDE9A2B;

  /** What everything fits into; in a smaller window all of it is drawn smaller. **/
  public static inline final LEAST_WIDTH = 760;

  public static inline final LEAST_HEIGHT = 480;
  public static inline final RADIUS = 8;

  static inline final SANS = "_sans";
  static inline final MONOSPACED = "_typewriter";

  /** A line of text that takes no part in mouse events. **/
  public static function label(text:String, size:Int, colour:Int, x:Float, y:Float):TextField {
    var field = new TextField();
    field.defaultTextFormat = new TextFormat(SANS, size, colour);
    field.autoSize = TextFieldAutoSize.LEFT;
    field.selectable = false;
    field.mouseEnabled = false;
    field.text = text;
    field.x = x;
    field.y = y;
    return field;
  }

  /** A box of text of a fixed size that breaks lines. **/
  public static function block(size:Int, colour:Int, x:Float, y:Float, width:Float, height:Float, monospaced = false):TextField {
    var field = new TextField();
    var format = new TextFormat(monospaced ? MONOSPACED : SANS, size, colour);
    format.leading = 3;
    field.defaultTextFormat = format;
    field.multiline = true;
    field.wordWrap = true;
    field.selectable = false;
    field.x = x;
    field.y = y;
    field.width = width;
    field.height = height;
    return field;
  }

  /** Shortens a label's text with an ellipsis until it is no wider than `width`. **/
  public static function fit(field:TextField, text:String, width:Float):Void {
    field.text = text;
    var kept = text.length;
    while (kept > 1 && field.textWidth > width) {
      kept = Std.int(Math.min(kept - 1, kept * width / field.textWidth));
      field.text = text.substr(0, kept) + "…";
    }
  }

  public static function box(graphics:Graphics, x:Float, y:Float, width:Float, height:Float, fill:Int, radius:Float = RADIUS):Void {
    graphics.beginFill(fill);
    graphics.drawRoundRect(x, y, width, height, radius * 2);
    graphics.endFill();
  }

  /** A box with a thin border inside its edge. **/
  public static function card(graphics:Graphics, x:Float, y:Float, width:Float, height:Float, line:Int = LINE, fill:Int = CARD,
      radius:Float = RADIUS):Void {
    box(graphics, x, y, width, height, line, radius);
    box(graphics, x + 1, y + 1, width - 2, height - 2, fill, radius - 1);
  }

  public static function shadow():DropShadowFilter {
    return new DropShadowFilter(6, 90, 0x0B1020, 0.35, 24, 24, 1, 2);
  }
}
