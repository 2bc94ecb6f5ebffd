import Icon.Glyph;
import flash.display.Sprite;
import flash.events.MouseEvent;
import flash.text.TextField;

/** How a button looks at rest, under the mouse, and the colour of what is written on it. **/
class ButtonStyle {
  public static final TOOL = new ButtonStyle(Theme.CARD, Theme.HOVER, Theme.INK, Theme.LINE);
  public static final PRIMARY = new ButtonStyle(Theme.ACCENT, Theme.ACCENT_DARK, 0xFFFFFF, Theme.ACCENT);
  public static final DANGER = new ButtonStyle(Theme.DANGER, Theme.DANGER_DARK, 0xFFFFFF, Theme.DANGER);
  public static final SIDE = new ButtonStyle(Theme.SIDE, Theme.SIDE_HOVER, Theme.SIDE_TEXT, Theme.SIDE);
  public static final SIDE_CURRENT = new ButtonStyle(Theme.SIDE_SELECTED, Theme.SIDE_SELECTED, 0xFFFFFF, Theme.SIDE_SELECTED);
  public static final CRUMB = new ButtonStyle(Theme.CARD, Theme.HOVER, Theme.MUTED, Theme.CARD);
  public static final CRUMB_LAST = new ButtonStyle(Theme.CARD, Theme.HOVER, Theme.INK, Theme.CARD);

  public final fill:Int;
  public final over:Int;
  public final text:Int;
  public final line:Int;

  function new(fill:Int, over:Int, text:Int, line:Int) {
    this.fill = fill;
    this.over = over;
    this.text = text;
    this.line = line;
  }
}

/** A button with an icon, a label or both. Its name is "button " and the label, or the given name. **/
class Button extends Sprite {
  public var enabled(default, set) = true;
  public var style(default, set):ButtonStyle;

  static inline final PADDING = 10;

  final glyph:Null<Glyph>;
  final icon:Null<Icon>;
  final label:Null<TextField>;
  final boxWidth:Float;
  final boxHeight:Float;
  var over = false;

  /** With `width` 0 the button is as wide as what is on it. `title` names a button without label. **/
  public function new(title:String, glyph:Null<Glyph>, style:ButtonStyle, width:Float, height:Float, onClick:() -> Void, iconOnly = false) {
    super();
    name = "button " + title;
    this.glyph = glyph;
    boxHeight = height;
    icon = glyph == null ? null : new Icon(glyph, style.text, iconOnly ? width / 2 - 8 : PADDING, height / 2 - 8);
    label = iconOnly ? null : Theme.label(title, 13, style.text, PADDING + (glyph == null ? 0 : 24), 0);
    boxWidth = width > 0 ? width : label.x + label.textWidth + 4 + PADDING;
    if (icon != null)
      addChild(icon);
    if (label != null)
      placeLabel(title, width);
    buttonMode = true;
    mouseChildren = false;
    this.style = style;
    addEventListener(MouseEvent.ROLL_OVER, event -> hover(true));
    addEventListener(MouseEvent.ROLL_OUT, event -> hover(false));
    addEventListener(MouseEvent.CLICK, event -> if (enabled) onClick());
  }

  function placeLabel(title:String, width:Float):Void {
    if (width > 0)
      Theme.fit(label, title, width - label.x - PADDING + 4);
    if (width > 0 && glyph == null)
      label.x = (width - label.textWidth) / 2 - 2;
    label.y = (boxHeight - label.height) / 2;
    addChild(label);
  }

  function hover(isOver:Bool):Void {
    over = isOver;
    draw();
  }

  function set_enabled(value:Bool):Bool {
    enabled = value;
    useHandCursor = value;
    alpha = value ? 1 : 0.4;
    draw();
    return value;
  }

  function set_style(value:ButtonStyle):ButtonStyle {
    style = value;
    if (label != null)
      label.textColor = value.text;
    if (icon != null)
      icon.draw(glyph, value.text);
    draw();
    return value;
  }

  function draw():Void {
    graphics.clear();
    Theme.card(graphics, 0, 0, boxWidth, boxHeight, style.line, over && enabled ? style.over : style.fill, 6);
  }
}
