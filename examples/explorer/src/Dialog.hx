import Button.ButtonStyle;
import flash.display.Shape;
import flash.display.Sprite;
import flash.events.KeyboardEvent;
import flash.text.TextField;
import flash.text.TextFieldType;
import flash.ui.Keyboard;

/** A card over the darkened window; only one is open at a time. Escape closes it. **/
class Dialog extends Sprite {
  static inline final MARGIN = 24;

  final card = new Sprite();
  final back = new Shape();
  final boxes = new Shape();
  final cardWidth:Float;
  var nextY = 62.0;
  var primary:Null<() -> Void> = null;

  public function new(title:String, width:Float) {
    super();
    name = "dialog";
    cardWidth = width;
    back.filters = [Theme.shadow()];
    card.addChild(back);
    card.addChild(boxes);
    card.addChild(Theme.label(title, 18, Theme.INK, MARGIN, 20));
    addChild(card);
    addEventListener(KeyboardEvent.KEY_DOWN, onKey);
  }

  public function close():Void {
    if (parent == null)
      return;
    stage.focus = null;
    parent.removeChild(this);
  }

  function innerWidth():Float {
    return cardWidth - 2 * MARGIN;
  }

  function addMessage(text:String):TextField {
    var message = Theme.block(13, Theme.MUTED, MARGIN, nextY - 6, innerWidth(), 44);
    message.mouseEnabled = false;
    message.text = text;
    message.height = message.textHeight + 8;
    nextY += message.height + 10;
    card.addChild(message);
    return message;
  }

  /** A field to write into; its name is "field " and the caption. **/
  function addField(caption:String, text:String, lines = 1):TextField {
    card.addChild(Theme.label(caption, 11, Theme.MUTED, MARGIN - 2, nextY - 4));
    var height = lines == 1 ? 34 : 16 + 18 * lines;
    Theme.card(boxes.graphics, MARGIN, nextY + 15, innerWidth(), height, 0xC9D2E1, 0xFCFDFE, 6);
    var field = Theme.block(13, Theme.INK, MARGIN + 8, nextY + 21, innerWidth() - 16, height - 10, lines > 1);
    field.type = TextFieldType.INPUT;
    field.selectable = true;
    field.multiline = field.wordWrap = lines > 1;
    field.text = text;
    field.name = "field " + caption;
    card.addChild(field);
    nextY += height + 28;
    return field;
  }

  /** The row of buttons at the end, each named "dialog button " and its label; `cancel` closes without doing anything. **/
  function addButtons(action:String, style:ButtonStyle, onAction:() -> Void, cancel = "Cancel"):Void {
    primary = onAction;
    var right = cardWidth - MARGIN;
    var buttons = [new Button(action, null, style, 0, 34, onAction), new Button(cancel, null, ButtonStyle.TOOL, 0, 34, close)];
    for (button in buttons) {
      right -= button.width;
      button.x = right;
      button.y = nextY + 6;
      button.name = "dialog " + button.name;
      right -= 10;
      card.addChild(button);
    }
    nextY += 40 + MARGIN;
  }

  /** Opens the dialog in the middle of the window, the text of `field` selected. **/
  public function show(owner:Sprite, field:Null<TextField> = null):Void {
    Theme.box(back.graphics, 0, 0, cardWidth, nextY, Theme.CARD, 12);
    owner.addChild(this);
    resize();
    focusRect = false;
    stage.focus = field == null ? this : field;
    if (field != null)
      field.setSelection(0, field.length);
  }

  /** Darkens what is behind it and stays in the middle. **/
  public function resize():Void {
    graphics.clear();
    graphics.beginFill(0x10162A, 0.45);
    graphics.drawRect(0, 0, Window.width(), Window.height());
    graphics.endFill();
    card.x = Math.round((Window.width() - cardWidth) / 2);
    card.y = Math.round((Window.height() - nextY) / 2);
  }

  /** The keys are the dialog's alone: what is behind it must not act on them as well. **/
  function onKey(event:KeyboardEvent):Void {
    event.stopPropagation();
    if (event.keyCode == Keyboard.ESCAPE)
      close();
    else if (event.keyCode == Keyboard.ENTER && primary != null && !isWritingLines())
      primary();
  }

  function isWritingLines():Bool {
    var field = Std.downcast(stage.focus, TextField);
    return field != null && field.multiline;
  }
}
