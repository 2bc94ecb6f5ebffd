import Button.ButtonStyle;
import corvane.CorvaneClient;
import corvane.Entry;
import flash.display.Shape;
import flash.display.Sprite;
import flash.text.TextField;

/** The card on the right: what is selected, and the text or the first bytes of a file. **/
class Preview extends Sprite {
  public var onOpen:Entry->Void = entry -> {};

  /** More characters make the player slow. **/
  static inline final MAX_CHARACTERS = 20000;

  static inline final FIRST_BYTES = 8;
  static inline final BODY = 92;

  final client:CorvaneClient;
  final icon = new EntryIcon(16, 18, 48);
  final title:TextField;
  final caption:TextField;
  final frame = new Shape();
  final body:TextField;
  final message:TextField;
  final open:Button;
  var boxWidth = 0.0;
  var boxHeight = 0.0;
  var entry:Null<Entry> = null;

  /** Counts the selections: an answer that belongs to an earlier one is dropped. **/
  var generation = 0;

  public function new(client:CorvaneClient) {
    super();
    this.client = client;
    title = Theme.label("", 15, Theme.INK, 76, 22);
    caption = Theme.label("", 11, Theme.MUTED, 76, 44);
    body = Theme.block(12, Theme.INK, 22, BODY + 8, 1, 1, true);
    body.selectable = true;
    message = Theme.label("", 12, Theme.FAINT, 0, 0);
    open = new Button("Open", null, ButtonStyle.PRIMARY, 96, 32, () -> onOpen(entry));
    open.y = BODY + 24;
    for (part in [icon, title, caption, frame, body, message, open])
      addChild(part);
    show(null, "");
  }

  public function place(x:Float, y:Float, width:Float, height:Float):Void {
    this.x = x;
    this.y = y;
    boxWidth = width;
    boxHeight = height;
    graphics.clear();
    Theme.card(graphics, 0, 0, width, height);
    body.width = width - 38;
    message.y = height / 2 - 10;
    open.x = (width - 96) / 2;
    say(message.text);
    if (entry != null)
      Theme.fit(title, Names.plain(entry.name), boxWidth - title.x - 16);
    if (body.visible)
      frameBody();
  }

  public function text():String {
    return body.visible ? body.text : "";
  }

  /** `path` is the full path of the entry. **/
  public function show(entry:Null<Entry>, path:String):Void {
    generation++;
    this.entry = entry;
    icon.show(entry);
    body.visible = false;
    frame.graphics.clear();
    open.visible = entry != null && entry.isDirectory();
    title.visible = caption.visible = entry != null;
    say(entry == null ? "Select a file to see what is in it" : "");
    if (entry == null)
      return;
    Theme.fit(title, Names.plain(entry.name), boxWidth - title.x - 16);
    caption.text = kind(entry);
    if (entry.isDirectory())
      return;
    if (Names.isText(entry.name))
      readText(path);
    else
      readBytes(path, 0, [], generation);
  }

  function readText(path:String):Void {
    var asked = generation;
    client.readText(path, outcome -> {
      if (asked != generation)
        return;
      if (!outcome.ok)
        say("The server could not read this file");
      else if (outcome.value == "")
        say("This file is empty");
      else
        fill(outcome.value);
    });
  }

  /** The protocol reads one byte at a time, so only a few are fetched. **/
  function readBytes(path:String, offset:Int, bytes:Array<String>, asked:Int):Void {
    client.readByte(path, offset, outcome -> {
      if (asked != generation)
        return;
      if (outcome.ok)
        bytes.push(StringTools.hex(outcome.value, 2));
      if (outcome.ok && bytes.length < FIRST_BYTES)
        readBytes(path, offset + 1, bytes, asked);
      else if (bytes.length == 0)
        say("This file is empty or cannot be read");
      else
        fill("First bytes\n\n" + bytes.join(" "));
    });
  }

  function fill(text:String):Void {
    body.text = text.length > MAX_CHARACTERS ? text.substr(0, MAX_CHARACTERS) + "\n…" : text;
    body.scrollV = 1;
    body.visible = true;
    frameBody();
  }

  function frameBody():Void {
    body.height = wholeLines();
    frame.graphics.clear();
    Theme.card(frame.graphics, 14, BODY, boxWidth - 28, boxHeight - BODY - 14, Theme.LINE, 0xFAFBFD, 6);
  }

  /** The height that cuts no line in two; a text field has two pixels of space above and below. **/
  function wholeLines():Float {
    var space = boxHeight - BODY - 14 - 18;
    var line = body.getLineMetrics(0).height;
    return 4 + line * Math.floor((space - 4) / line);
  }

  function say(text:String):Void {
    message.text = text;
    message.x = (boxWidth - message.width) / 2;
  }

  static function kind(entry:Entry):String {
    var extension = Names.extension(entry.name);
    var kind = entry.isDirectory() ? "Folder" : extension == "" ? "File" : extension.toUpperCase() + " file";
    return kind + (entry.isHidden() ? ", hidden" : "") + (entry.isReadOnly() ? ", read-only" : "");
  }
}
