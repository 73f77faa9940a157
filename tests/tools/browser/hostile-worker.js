// Script requests from a worker of the hostile page.
var xhr = new XMLHttpRequest(); xhr.open('GET', 'secret.txt?worker-xhr'); xhr.send();
fetch('secret.txt?worker-fetch');
try { importScripts('secret.txt?worker-import'); } catch (e) {}
