import corvane.Entry;
import flash.display.Graphics;
import flash.display.Shape;
import flash.display.Sprite;
import flash.text.TextField;

/** The picture of a folder or of a file; a file's colour and letters come from its extension. **/
class EntryIcon extends Sprite {
  final shape = new Shape();
  final letters:TextField;

  /** The letters cannot be read on a small icon. **/
  final hasLetters:Bool;

  public function new(x:Float, y:Float, size:Float) {
    super();
    this.x = x;
    this.y = y;
    letters = Theme.label("", 9, 0xFFFFFF, 0, 0);
    addChild(shape);
    addChild(letters);
    scaleX = scaleY = size / 32;
    hasLetters = size >= 32;
  }

  /** Draws nothing for null. **/
  public function show(entry:Null<Entry>):Void {
    var g = shape.graphics;
    g.clear();
    letters.text = "";
    if (entry == null)
      return;
    alpha = entry.isHidden() ? 0.55 : 1;
    if (entry.isDirectory())
      folder(g);
    else
      file(g, Names.extension(entry.name));
  }

  function folder(g:Graphics):Void {
    g.beginFill(Theme.FOLDER_DARK);
    g.drawRoundRect(2, 5, 14, 10, 5);
    g.drawRoundRect(2, 8, 28, 18, 5);
    g.endFill();
    Theme.box(g, 2, 11, 28, 16, Theme.FOLDER, 2.5);
    g.beginFill(0xFFFFFF, 0.35);
    g.drawRect(4, 12.2, 24, 1.2);
    g.endFill();
  }

  function file(g:Graphics, extension:String):Void {
    var colour = colourOf(extension);
    sheet(g, 6, 2, 20, 28, 0xC3CCDC);
    sheet(g, 7, 3, 18, 26, 0xFFFFFF);
    g.beginFill(0xC3CCDC);
    g.moveTo(19, 2);
    g.lineTo(26, 9);
    g.lineTo(19, 9);
    g.endFill();
    if (!hasLetters) {
      Theme.box(g, 6, 18, 20, 12, colour, 0);
      Theme.box(g, 10, 12, 12, 2, 0xD5DCE8, 1);
      return;
    }
    for (line in 0...2)
      Theme.box(g, 10, 9 + 4 * line, line == 0 ? 7 : 12, 1.5, 0xD5DCE8, 0.7);
    Theme.box(g, 3, 17, 26, 9, colour, 2);
    letters.text = extension.substr(0, 4).toUpperCase();
    letters.scaleX = letters.scaleY = 0.8;
    letters.x = 16 - letters.width / 2;
    letters.y = 21.5 - letters.height / 2;
  }

  /** A sheet of paper whose upper right corner is cut. **/
  function sheet(g:Graphics, x:Float, y:Float, width:Float, height:Float, colour:Int):Void {
    g.beginFill(colour);
    g.moveTo(x, y);
    g.lineTo(x + width - 7, y);
    g.lineTo(x + width, y + 7);
    g.lineTo(x + width, y + height);
    g.lineTo(x, y + height);
    g.endFill();
  }

  static function colourOf(extension:String):Int {
    return switch (extension) {
      case "txt", "md", "log", "csv": 0x4A7DE8;
      case "conf", "cfg", "ini", "xml", "json": 0x7B61D1;
      case "png", "jpg", "jpeg", "gif", "svg": 0x2FA978;
      case "swf", "fla", "as", "hx": 0xD9483B;
      case "html", "htm", "css", "js": 0xE08A2E;
      case "mp3", "wav", "flv", "mp4": 0xC2489B;
      default: 0x8793AB;
    }
  }
}
